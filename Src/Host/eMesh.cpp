#include "eMesh.h"
#include "eHardwareBuffer.h"

#include <cstdio>
#include <cstring>

namespace KYR
{

namespace
{

int TypeSize(eVertexElementType type)
{
    switch ((int)type)
    {
    case 5120: // GL_BYTE
    case 5121: // GL_UNSIGNED_BYTE
        return 1;
    case 5122: // GL_SHORT
    case 5123: // GL_UNSIGNED_SHORT
        return 2;
    case 5124: // GL_INT
    case 5125: // GL_UNSIGNED_INT
    case 5126: // GL_FLOAT
        return 4;
    case 5130: // GL_DOUBLE
        return 8;
    default:
        return 0;
    }
}

unsigned int const kStaticDraw = 35044; // GL_STATIC_DRAW

} // namespace

// ---------------------------------------------------------------------------------------------
// eVertexData
// ---------------------------------------------------------------------------------------------

eVertexData::eVertexData() : m_nVertexType(0), m_nVertexSize(0), m_pHardwareBuffer(nullptr) {}

eVertexData::~eVertexData()
{
    Delete();
}

eVertexElement& eVertexData::AddElement(eVertexElementType type, eVertexElementCount count,
                                        eAttributeIndex index, unsigned char normalised)
{
    if (TypeSize(type) == 0)
        std::fprintf(stderr, "eVertexData: unknown element type %d\n", (int)type);
    int vertices = GetVertexSize();
    eVertexElement e;
    e.m_eType = type;
    e.m_nCount = (int)count;
    e.m_bNormalized = normalised;
    e.m_eIndex = index;
    e.m_nOffset = ElementBytes();
    m_arElements.push_back(e);
    // The vertex count may be set before the layout: keep the store count * stride bytes.
    if (vertices > 0)
    {
        m_arVertexBuffer.resize((size_t)vertices * (size_t)GetVertexStride());
        m_nVertexSize = vertices;
    }
    return m_arElements.back();
}

int eVertexData::GetVertexStride() const
{
    int stride = ElementBytes();
    return m_nRecordStride > stride ? m_nRecordStride : stride;
}

int eVertexData::ElementBytes() const
{
    int stride = 0;
    for (eVertexElement const& e : m_arElements)
    {
        int end = e.m_nOffset + e.m_nCount * TypeSize(e.m_eType);
        if (end > stride)
            stride = end;
    }
    return stride;
}

void eVertexData::SetVertexSize(int count)
{
    if (count < 0)
        count = 0;
    m_nVertexSize = count;
    m_arVertexBuffer.resize((size_t)count * (size_t)GetVertexStride());
}

int eVertexData::GetVertexSize() const
{
    int stride = GetVertexStride();
    if (!m_arVertexBuffer.empty() && stride > 0)
        return (int)(m_arVertexBuffer.size() / (size_t)stride);
    return m_nVertexSize;
}

unsigned char* eVertexData::GetVertex(int i)
{
    int stride = GetVertexStride();
    if (i < 0 || stride <= 0)
        return nullptr;
    size_t start = (size_t)i * (size_t)stride;
    if (start + (size_t)stride > m_arVertexBuffer.size())
        return nullptr;
    return m_arVertexBuffer.data() + start;
}

void eVertexData::AddVertex(unsigned char const* data, int count)
{
    int stride = GetVertexStride();
    if (!data || count <= 0 || stride <= 0)
        return;
    int have = GetVertexSize();
    size_t start = (size_t)have * (size_t)stride;
    size_t bytes = (size_t)count * (size_t)stride;
    m_arVertexBuffer.resize(start + bytes);
    std::memcpy(m_arVertexBuffer.data() + start, data, bytes);
    m_nVertexSize = have + count;
}

void eVertexData::AddVertex(float const* data, int count)
{
    AddVertex(reinterpret_cast<unsigned char const*>(data), count);
}

unsigned char eVertexData::Create()
{
    int stride = GetVertexStride();
    int count = GetVertexSize();
    eHardwareVertexBuffer* buffer = eHardwareBufferManager::GetSingleton().CreateVertexBuffer();
    void const* data = m_arVertexBuffer.empty() ? nullptr : m_arVertexBuffer.data();
    if (!buffer->Allocate(kStaticDraw, 1, (int)m_arVertexBuffer.size(), data))
    {
        delete buffer;
        return 0;
    }
    buffer->SetVertexStride(stride);
    SetHardwareBuffer(buffer);
    m_nVertexSize = count;
    return 1;
}

unsigned char eVertexData::Delete()
{
    delete m_pHardwareBuffer;
    m_pHardwareBuffer = nullptr;
    return 1;
}

void eVertexData::SetHardwareBuffer(eHardwareVertexBuffer* buffer)
{
    if (buffer != m_pHardwareBuffer)
        delete m_pHardwareBuffer;
    m_pHardwareBuffer = buffer;
}

eHardwareVertexBuffer* eVertexData::DetachHardwareBuffer()
{
    eHardwareVertexBuffer* buffer = m_pHardwareBuffer;
    m_pHardwareBuffer = nullptr;
    return buffer;
}

// ---------------------------------------------------------------------------------------------
// eIndexData, eIndexExData
// ---------------------------------------------------------------------------------------------

eIndexData::eIndexData() : m_nIndexSize(0), m_pHardwareBuffer(nullptr) {}

eIndexData::~eIndexData()
{
    Delete();
}

void eIndexData::AddIndex(unsigned short index)
{
    m_arIndexBuffer.push_back(index);
}

int eIndexData::GetIndexSize() const
{
    int stored = GetStoredCount();
    if (stored > 0)
        return stored;
    // The processor copy was emptied (or never filled): the buffer knows the count.
    return m_pHardwareBuffer ? m_pHardwareBuffer->GetIndexCount() : m_nIndexSize;
}

unsigned int eIndexData::GetIndexType() const
{
    return 5123u;
} // GL_UNSIGNED_SHORT

void const* eIndexData::GetIndexPointer() const
{
    return m_arIndexBuffer.empty() ? nullptr : m_arIndexBuffer.data();
}

unsigned char eIndexData::Create()
{
    int count = GetStoredCount();
    eHardwareIndexBuffer* buffer = eHardwareBufferManager::GetSingleton().CreateIndexBuffer();
    if (!buffer->Allocate(kStaticDraw, GetIndexBytes(), count, GetIndexPointer()))
    {
        delete buffer;
        return 0;
    }
    SetHardwareBuffer(buffer);
    m_nIndexSize = count;
    return 1;
}

unsigned char eIndexData::Delete()
{
    delete m_pHardwareBuffer;
    m_pHardwareBuffer = nullptr;
    return 1;
}

void eIndexData::SetHardwareBuffer(eHardwareIndexBuffer* buffer)
{
    if (buffer != m_pHardwareBuffer)
        delete m_pHardwareBuffer;
    m_pHardwareBuffer = buffer;
}

eHardwareIndexBuffer* eIndexData::DetachHardwareBuffer()
{
    eHardwareIndexBuffer* buffer = m_pHardwareBuffer;
    m_pHardwareBuffer = nullptr;
    return buffer;
}

unsigned int eIndexExData::GetIndexType() const
{
    return 5125u;
} // GL_UNSIGNED_INT

void const* eIndexExData::GetIndexPointer() const
{
    return m_arIndexExBuffer.empty() ? nullptr : m_arIndexExBuffer.data();
}

// ---------------------------------------------------------------------------------------------
// eMesh
// ---------------------------------------------------------------------------------------------

eMesh::eMesh()
    : m_pVertexData(new eVertexData()), m_pIndexData(new eIndexData()),
      m_eOperationType(eOT_TRIANGLE_LIST)
{
}

eMesh::eMesh(bool wideIndices)
    : m_pVertexData(new eVertexData()),
      m_pIndexData(wideIndices ? new eIndexExData() : new eIndexData()),
      m_eOperationType(eOT_TRIANGLE_LIST)
{
}

eMesh::~eMesh()
{
    delete m_pVertexData;
    delete m_pIndexData;
}

} // namespace KYR
