#include "eRenderSystem.h"
#include "eGLContext.h"
#include "eGLCurrent.h"
#include "eHardwareBuffer.h"
#include "eMesh.h"
#include "eRecorder.h"

#include <epoxy/gl.h>

namespace KYR
{

namespace
{

// One vertex array object for every draw of the render system (a core context needs one
// bound; the compatibility context accepts it as well). There is one context per process.
GLuint s_nSharedVAO = 0;

int const kMaxAttributes = 16;

bool IsIntegerType(eVertexElementType type)
{
    return type != eVET_FLOAT && (int)type != 5130; // neither float nor double
}

void Record(char const* op, eOperationType type, long long count, long long first,
            void const* object)
{
    Host::eRecorder& recorder = Host::eRecorder::Get();
    if (!recorder.IsOn())
        return;
    Host::eRecord r;
    r.kind = Host::eRecord::Draw;
    r.op = op;
    r.mode = (int)type;
    r.count = count;
    r.first = first;
    r.object = object;
    recorder.Add(r);
}

} // namespace

eRenderSystem::eRenderSystem() {}

eRenderSystem::~eRenderSystem() {}

bool eRenderSystem::BeginDraw(eVertexData* vertices, unsigned int& enabledMask, int& previousVAO,
                              int& previousArrayBuffer)
{
    enabledMask = 0;
    if (!vertices || !Host::HasCurrentGLContext())
        return false;
    eHardwareVertexBuffer* buffer = vertices->GetHardwareBuffer();
    int stride = vertices->GetVertexStride();
    if (!buffer || !buffer->GetBufferID() || stride <= 0 || vertices->GetVertexElements().empty())
        return false;

    GLint vao = 0, arrayBuffer = 0;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &vao);
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &arrayBuffer);
    previousVAO = vao;
    previousArrayBuffer = arrayBuffer;

    if (!s_nSharedVAO)
        glGenVertexArrays(1, &s_nSharedVAO);
    glBindVertexArray(s_nSharedVAO);
    glBindBuffer(GL_ARRAY_BUFFER, buffer->GetBufferID());
    for (eVertexElement const& e : vertices->GetVertexElements())
    {
        int index = (int)e.m_eIndex;
        if (index < 0 || index >= kMaxAttributes || e.m_nCount < 1 || e.m_nCount > 4)
            continue;
        void const* offset = reinterpret_cast<void const*>((size_t)e.m_nOffset);
        if (IsIntegerType(e.m_eType) && !e.m_bNormalized)
            glVertexAttribIPointer((GLuint)index, e.m_nCount, (GLenum)e.m_eType, stride, offset);
        else
            glVertexAttribPointer((GLuint)index, e.m_nCount, (GLenum)e.m_eType,
                                  e.m_bNormalized ? GL_TRUE : GL_FALSE, stride, offset);
        glEnableVertexAttribArray((GLuint)index);
        enabledMask |= 1u << index;
    }
    return true;
}

void eRenderSystem::EndDraw(unsigned int enabledMask, int previousVAO, int previousArrayBuffer)
{
    for (int i = 0; i < kMaxAttributes; ++i)
        if (enabledMask & (1u << i))
            glDisableVertexAttribArray((GLuint)i);
    glBindVertexArray((GLuint)previousVAO);
    glBindBuffer(GL_ARRAY_BUFFER, (GLuint)previousArrayBuffer);
}

void eRenderSystem::DrawVertices(eOperationType type, eVertexData* vertices, int first, int count,
                                 bool)
{
    Record("DrawVertices", type, count, first, vertices);
    unsigned int mask = 0;
    int vao = 0, arrayBuffer = 0;
    if (first < 0 || count <= 0 || !BeginDraw(vertices, mask, vao, arrayBuffer))
        return;
    // Never read beyond the buffer: clip the range to the vertices it holds.
    long long available =
        vertices->GetHardwareBuffer()->GetSizeInBytes() / vertices->GetVertexStride();
    long long n = count;
    if ((long long)first + n > available)
        n = available - first;
    if (n > 0)
    {
        Host::eDirectCallMute mute;
        glDrawArrays((GLenum)type, first, (GLsizei)n);
    }
    EndDraw(mask, vao, arrayBuffer);
}

void eRenderSystem::DrawElementRange(char const* op, eOperationType type, eVertexData* vertices,
                                     eIndexData* indices, long long count, long long start)
{
    Record(op, type, count, start, vertices);
    if (!indices || count <= 0 || start < 0)
        return;
    eHardwareIndexBuffer* indexBuffer = indices->GetHardwareBuffer();
    if (!indexBuffer || !indexBuffer->GetBufferID())
        return;
    unsigned int mask = 0;
    int vao = 0, arrayBuffer = 0;
    if (!BeginDraw(vertices, mask, vao, arrayBuffer))
        return;
    // The buffer's own element size decides the index type, so a wide buffer attached to
    // any store draws right.
    int size = indexBuffer->GetIndexSize();
    GLenum indexType = size == 4   ? GL_UNSIGNED_INT
                       : size == 1 ? GL_UNSIGNED_BYTE
                                   : GL_UNSIGNED_SHORT;
    long long available = indexBuffer->GetIndexCount();
    long long n = count;
    if (start + n > available)
        n = available - start;
    if (n > 0)
    {
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer->GetBufferID());
        Host::eDirectCallMute mute;
        glDrawElements((GLenum)type, (GLsizei)n, indexType,
                       reinterpret_cast<void const*>((size_t)(start * size)));
    }
    EndDraw(mask, vao, arrayBuffer);
}

void eRenderSystem::DrawIndexRange(eOperationType type, eVertexData* vertices, eIndexData* indices,
                                   int count, __int64 start, bool)
{
    DrawElementRange("DrawIndexRange", type, vertices, indices, count, start);
}

void eRenderSystem::DrawIndexed(eOperationType type, eVertexData* vertices, eIndexData* indices,
                                bool)
{
    DrawElementRange("DrawIndexed", type, vertices, indices, indices ? indices->GetIndexSize() : 0,
                     0);
}

} // namespace KYR
