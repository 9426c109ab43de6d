// Vertex and index stores of the material system, and the mesh that pairs them.
// A store keeps its data on the processor side until Create uploads it into a hardware
// buffer; the processor copy may then be emptied and the store still knows its count.
#pragma once
#include "eEnums.h"
#include <vector>

namespace KYR
{

class eHardwareVertexBuffer;
class eHardwareIndexBuffer;

// One attribute of a vertex, as it is handed to glVertexAttribPointer.
struct eVertexElement
{
    eVertexElementType m_eType;
    int m_nCount;                // components, 1 to 4
    unsigned char m_bNormalized; // integer data normalised to 0..1 / -1..1
    eAttributeIndex m_eIndex;    // generic attribute number
    int m_nOffset;               // bytes from the start of the vertex
};

class eVertexData
{
public:
    eVertexData();
    virtual ~eVertexData();
    eVertexData(eVertexData const&) = delete;
    eVertexData& operator=(eVertexData const&) = delete;

    // Opaque layout tag; stored for the host, it does not create elements.
    void SetVertexType(unsigned int type) { m_nVertexType = type; }
    unsigned int GetVertexType() const { return m_nVertexType; }

    // Appends an attribute at the current end of the vertex (offset = stride so far).
    eVertexElement& AddElement(eVertexElementType type, eVertexElementCount count,
                               eAttributeIndex index, unsigned char normalised);

    // Vertex count; resizes the processor store to count * stride bytes.
    void SetVertexSize(int count);
    // Vertex count: taken from the processor store while it holds data, otherwise the
    // count last set, added or uploaded (so it survives emptying the store after Create).
    int GetVertexSize() const;
    // Bytes per vertex: the sum over the elements of components * size of the type, or the
    // record size set below when that is larger.
    int GetVertexStride() const;
    // A record larger than its declared elements: the bytes after them are stored, uploaded
    // and stepped over with the rest (programs read them by other means). 0 returns to the
    // elements' own size; a size below it changes nothing. Elements added later still start
    // where the declared ones end.
    void SetVertexStride(int bytes) { m_nRecordStride = bytes > 0 ? bytes : 0; }

    std::vector<unsigned char>& GetVertexBuffer() { return m_arVertexBuffer; }
    std::vector<eVertexElement>& GetVertexElements() { return m_arElements; }

    // Start of vertex i in the processor store; null outside it.
    unsigned char* GetVertex(int i);
    // Append count whole vertices (stride bytes each) read from data.
    void AddVertex(float const* data, int count);
    void AddVertex(unsigned char const* data, int count);

    // Uploads the processor store into a new static hardware buffer, replacing (and
    // deleting) a previous one. An empty store gives an empty buffer and succeeds.
    unsigned char Create();
    // Deletes the hardware buffer. The processor store stays.
    unsigned char Delete();

    eHardwareVertexBuffer* GetHardwareBuffer() { return m_pHardwareBuffer; }
    // Attaches a buffer made elsewhere (a dynamic one, written with WriteData). The store
    // takes ownership: Delete and the destructor free it. A previous different buffer is
    // deleted.
    void SetHardwareBuffer(eHardwareVertexBuffer* buffer);
    // Hands the buffer back to the caller without deleting it; the store has none after.
    eHardwareVertexBuffer* DetachHardwareBuffer();

protected:
    // Bytes the declared elements span.
    int ElementBytes() const;

    unsigned int m_nVertexType;
    int m_nVertexSize;
    int m_nRecordStride = 0;
    std::vector<unsigned char> m_arVertexBuffer;
    std::vector<eVertexElement> m_arElements;
    eHardwareVertexBuffer* m_pHardwareBuffer;
};

// 16-bit indices.
class eIndexData
{
public:
    eIndexData();
    virtual ~eIndexData();
    eIndexData(eIndexData const&) = delete;
    eIndexData& operator=(eIndexData const&) = delete;

    std::vector<unsigned short>& GetIndexBuffer() { return m_arIndexBuffer; }
    virtual void AddIndex(unsigned short index);
    // Index count: from the processor store while it holds data, otherwise the count the
    // hardware buffer holds (or held at the last upload, once deleted).
    virtual int GetIndexSize() const;
    // GL_UNSIGNED_SHORT (5123) here, GL_UNSIGNED_INT (5125) for eIndexExData.
    virtual unsigned int GetIndexType() const;
    // Bytes per index: 2 here, 4 for eIndexExData.
    int GetIndexBytes() const { return GetIndexType() == 5125u ? 4 : 2; }

    // Uploads the processor store into a new static index buffer, replacing a previous one.
    unsigned char Create();
    // Deletes the hardware buffer. The processor store stays.
    unsigned char Delete();

    eHardwareIndexBuffer* GetHardwareBuffer() { return m_pHardwareBuffer; }
    // Attaches a buffer made elsewhere; ownership as for eVertexData::SetHardwareBuffer.
    void SetHardwareBuffer(eHardwareIndexBuffer* buffer);
    eHardwareIndexBuffer* DetachHardwareBuffer();

protected:
    virtual void const* GetIndexPointer() const;
    virtual int GetStoredCount() const { return (int)m_arIndexBuffer.size(); }

    std::vector<unsigned short> m_arIndexBuffer;
    int m_nIndexSize; // count of the last upload
    eHardwareIndexBuffer* m_pHardwareBuffer;
};

// 32-bit indices; GetIndexBuffer (16-bit) is unused by this variant.
class eIndexExData : public eIndexData
{
public:
    eIndexExData() {}
    ~eIndexExData() override {}

    std::vector<unsigned int>& GetIndexExBuffer() { return m_arIndexExBuffer; }
    void AddIndex(unsigned short index) override { m_arIndexExBuffer.push_back(index); }
    void AddIndexEx(unsigned int index) { m_arIndexExBuffer.push_back(index); }
    unsigned int GetIndexType() const override;

protected:
    void const* GetIndexPointer() const override;
    int GetStoredCount() const override { return (int)m_arIndexExBuffer.size(); }

    std::vector<unsigned int> m_arIndexExBuffer;
};

class eMesh
{
public:
    eMesh();
    // With wideIndices the mesh owns an eIndexExData instead of an eIndexData.
    explicit eMesh(bool wideIndices);
    virtual ~eMesh();
    eMesh(eMesh const&) = delete;
    eMesh& operator=(eMesh const&) = delete;

    eVertexData* GetVertexData() { return m_pVertexData; }
    eIndexData* GetIndexData() { return m_pIndexData; }
    eOperationType GetOperationType() const { return m_eOperationType; }
    void SetOperationType(eOperationType type) { m_eOperationType = type; }

    void SetVertexType(unsigned int type) { m_pVertexData->SetVertexType(type); }
    void SetVertexSize(int count) { m_pVertexData->SetVertexSize(count); }
    int GetVertexSize() const { return m_pVertexData->GetVertexSize(); }
    void AddVertex(float const* data, int count) { m_pVertexData->AddVertex(data, count); }
    float* GetVertex(int i) { return reinterpret_cast<float*>(m_pVertexData->GetVertex(i)); }

protected:
    eVertexData* m_pVertexData;
    eIndexData* m_pIndexData;
    eOperationType m_eOperationType;
};

// A mesh of a plotted shape; same storage as eMesh.
class eMeshPlot : public eMesh
{
public:
    eMeshPlot() {}
    explicit eMeshPlot(bool wideIndices) : eMesh(wideIndices) {}
    ~eMeshPlot() override {}
};

} // namespace KYR
