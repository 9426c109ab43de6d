// GPU buffer objects of the material system. A buffer is created empty; Allocate gives it
// its size (and optionally its first content), WriteData replaces a range later. No call
// binds the buffer to GL_ARRAY_BUFFER or GL_ELEMENT_ARRAY_BUFFER, so a vertex array object
// that happens to be bound is never changed behind the caller's back.
#pragma once

namespace KYR
{

class eHardwareBuffer
{
public:
    eHardwareBuffer();
    // Deletes the OpenGL buffer (when a context is current).
    virtual ~eHardwareBuffer();
    eHardwareBuffer(eHardwareBuffer const&) = delete;
    eHardwareBuffer& operator=(eHardwareBuffer const&) = delete;

    // Replaces the range [offset, offset + bytes) of the allocation. Fails (0) outside the
    // allocation, with a null source, or before Allocate.
    unsigned char WriteData(int offset, int bytes, void const* data);
    // Reads the range [offset, offset + bytes) back into out. Same limits as WriteData.
    unsigned char ReadData(int offset, int bytes, void* out);

    unsigned int GetBufferID() const { return m_nBufferID; }
    int GetSizeInBytes() const { return m_nSizeInBytes; }
    unsigned int GetUsage() const { return m_nUsage; }

protected:
    // Creates the buffer object on first use and gives it bytes of storage, filled from
    // data or with zeros when data is null.
    unsigned char AllocateBytes(unsigned int usage, long long bytes, void const* data);

    unsigned int m_nBufferID;
    int m_nSizeInBytes;
    unsigned int m_nUsage;
};

class eHardwareVertexBuffer : public eHardwareBuffer
{
public:
    eHardwareVertexBuffer();
    ~eHardwareVertexBuffer() override;

    // Storage of count * bytes bytes (count is 1 in every use, bytes is then the total),
    // usage GL_STATIC_DRAW (35044) or GL_DYNAMIC_DRAW (35048). A later call re-allocates.
    unsigned char Allocate(unsigned int usage, int count, int bytes, void const* data);

    void SetVertexStride(int stride) { m_nVertexStride = stride; }
    int GetVertexStride() const { return m_nVertexStride; }

private:
    int m_nVertexStride;
};

class eHardwareIndexBuffer : public eHardwareBuffer
{
public:
    eHardwareIndexBuffer();
    ~eHardwareIndexBuffer() override;

    // Storage of count indices of indexSize bytes each (2 or 4; 1 is accepted too).
    unsigned char Allocate(unsigned int usage, int indexSize, int count, void const* data);

    // Bytes per index.
    int GetIndexSize() const { return m_nIndexSize; }
    // Number of indices the allocation holds.
    int GetIndexCount() const { return m_nIndexSize > 0 ? m_nSizeInBytes / m_nIndexSize : 0; }

private:
    int m_nIndexSize;
};

// Factory of hardware buffers; the caller owns what it returns.
class eHardwareBufferManager
{
public:
    static eHardwareBufferManager& GetSingleton();
    eHardwareVertexBuffer* CreateVertexBuffer();
    eHardwareIndexBuffer* CreateIndexBuffer();

private:
    eHardwareBufferManager() {}
};

} // namespace KYR
