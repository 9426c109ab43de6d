#include "eHardwareBuffer.h"
#include "eGLCurrent.h"

#include <epoxy/gl.h>

#include <cstdio>
#include <vector>

namespace KYR
{

namespace
{

// All transfers go through the copy-write binding point, which no vertex array object
// records, and put back whatever was bound there before.
class eCopyWriteBinding
{
public:
    explicit eCopyWriteBinding(unsigned int buffer)
    {
        glGetIntegerv(GL_COPY_WRITE_BUFFER_BINDING, &m_nPrevious);
        glBindBuffer(GL_COPY_WRITE_BUFFER, buffer);
    }
    ~eCopyWriteBinding() { glBindBuffer(GL_COPY_WRITE_BUFFER, (GLuint)m_nPrevious); }

private:
    GLint m_nPrevious = 0;
};

bool RangeInside(int offset, int bytes, int size)
{
    return offset >= 0 && bytes >= 0 && (long long)offset + bytes <= (long long)size;
}

} // namespace

eHardwareBuffer::eHardwareBuffer() : m_nBufferID(0), m_nSizeInBytes(0), m_nUsage(GL_STATIC_DRAW) {}

eHardwareBuffer::~eHardwareBuffer()
{
    if (m_nBufferID && Host::HasCurrentGLContext())
    {
        GLuint id = m_nBufferID;
        glDeleteBuffers(1, &id);
    }
    m_nBufferID = 0;
}

unsigned char eHardwareBuffer::AllocateBytes(unsigned int usage, long long bytes, void const* data)
{
    if (bytes < 0 || bytes > 0x7FFFFFFFLL)
    {
        std::fprintf(stderr, "eHardwareBuffer: cannot allocate %lld bytes\n", bytes);
        return 0;
    }
    if (!Host::HasCurrentGLContext())
    {
        std::fprintf(stderr, "eHardwareBuffer: no OpenGL context is current\n");
        return 0;
    }
    if (!m_nBufferID)
    {
        GLuint id = 0;
        glGenBuffers(1, &id);
        if (!id)
        {
            std::fprintf(stderr, "eHardwareBuffer: glGenBuffers failed\n");
            return 0;
        }
        m_nBufferID = id;
    }
    // Buffer storage starts undefined in OpenGL; give it zeros so that a buffer that is
    // filled piecewise later never shows stale memory.
    std::vector<unsigned char> zeros;
    if (!data && bytes > 0)
    {
        zeros.assign((size_t)bytes, 0);
        data = zeros.data();
    }
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i)
    {
    }
    {
        eCopyWriteBinding bind(m_nBufferID);
        glBufferData(GL_COPY_WRITE_BUFFER, (GLsizeiptr)bytes, data, (GLenum)usage);
    }
    GLenum err = glGetError();
    if (err != GL_NO_ERROR)
    {
        std::fprintf(stderr, "eHardwareBuffer: glBufferData of %lld bytes failed (0x%04X)\n", bytes,
                     err);
        m_nSizeInBytes = 0;
        return 0;
    }
    m_nSizeInBytes = (int)bytes;
    m_nUsage = usage;
    return 1;
}

unsigned char eHardwareBuffer::WriteData(int offset, int bytes, void const* data)
{
    if (!m_nBufferID || !RangeInside(offset, bytes, m_nSizeInBytes) || (!data && bytes > 0))
        return 0;
    if (bytes == 0)
        return 1;
    eCopyWriteBinding bind(m_nBufferID);
    glBufferSubData(GL_COPY_WRITE_BUFFER, offset, bytes, data);
    return 1;
}

unsigned char eHardwareBuffer::ReadData(int offset, int bytes, void* out)
{
    if (!m_nBufferID || !RangeInside(offset, bytes, m_nSizeInBytes) || (!out && bytes > 0))
        return 0;
    if (bytes == 0)
        return 1;
    eCopyWriteBinding bind(m_nBufferID);
    glGetBufferSubData(GL_COPY_WRITE_BUFFER, offset, bytes, out);
    return 1;
}

eHardwareVertexBuffer::eHardwareVertexBuffer() : m_nVertexStride(0) {}

eHardwareVertexBuffer::~eHardwareVertexBuffer() {}

unsigned char eHardwareVertexBuffer::Allocate(unsigned int usage, int count, int bytes,
                                              void const* data)
{
    if (count < 0 || bytes < 0)
    {
        std::fprintf(stderr, "eHardwareVertexBuffer: bad size %d x %d\n", count, bytes);
        return 0;
    }
    return AllocateBytes(usage, (long long)count * bytes, data);
}

eHardwareIndexBuffer::eHardwareIndexBuffer() : m_nIndexSize(2) {}

eHardwareIndexBuffer::~eHardwareIndexBuffer() {}

unsigned char eHardwareIndexBuffer::Allocate(unsigned int usage, int indexSize, int count,
                                             void const* data)
{
    if ((indexSize != 1 && indexSize != 2 && indexSize != 4) || count < 0)
    {
        std::fprintf(stderr, "eHardwareIndexBuffer: bad size %d x %d\n", count, indexSize);
        return 0;
    }
    if (!AllocateBytes(usage, (long long)count * indexSize, data))
        return 0;
    m_nIndexSize = indexSize;
    return 1;
}

eHardwareBufferManager& eHardwareBufferManager::GetSingleton()
{
    static eHardwareBufferManager s_manager;
    return s_manager;
}

eHardwareVertexBuffer* eHardwareBufferManager::CreateVertexBuffer()
{
    return new eHardwareVertexBuffer();
}

eHardwareIndexBuffer* eHardwareBufferManager::CreateIndexBuffer()
{
    return new eHardwareIndexBuffer();
}

} // namespace KYR
