#include "eRenderWorldObject.h"
#include "GLut.h"
#include "eCamera.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <algorithm>

namespace KYR
{

namespace
{
unsigned int const kArrayBuffer = 34962;        // GL_ARRAY_BUFFER
unsigned int const kElementArrayBuffer = 34963; // GL_ELEMENT_ARRAY_BUFFER
unsigned int const kColorTableUnit = 33987;     // GL_TEXTURE3
unsigned int const kAppendVertexType = 0x1000;

// Vertices the uploaded buffer of a store really holds.
int UploadedVertices(eVertexData* vd)
{
    eHardwareVertexBuffer* hb = vd ? vd->GetHardwareBuffer() : nullptr;
    int stride = vd ? vd->GetVertexStride() : 0;
    if (!hb || !hb->GetBufferID() || stride <= 0)
        return 0;
    return hb->GetSizeInBytes() / stride;
}

// Points the attributes of a store at its buffer; returns the attributes enabled.
unsigned int BindStream(eVertexData* vd)
{
    unsigned int mask = 0;
    int stride = vd->GetVertexStride();
    GLut::BindBuffer(kArrayBuffer, vd->GetHardwareBuffer()->GetBufferID());
    for (eVertexElement const& e : vd->GetVertexElements())
    {
        unsigned int index = (unsigned int)e.m_eIndex;
        if (index >= 16)
            continue;
        GLut::VertexAttribPointer(index, e.m_nCount, (unsigned int)e.m_eType, e.m_bNormalized,
                                  stride, reinterpret_cast<void const*>((size_t)e.m_nOffset));
        GLut::EnableVertexAttribArray(index);
        mask |= 1u << index;
    }
    return mask;
}

// The object number of a vertex: its third float, truncated.
int ObjectNumber(eMesh* source, int i)
{
    float const* v = source->GetVertex(i);
    if (!v || source->GetVertexData()->GetVertexStride() < 3 * (int)sizeof(float))
        return 0;
    double n = v[2];
    return n > -2147483648.0 && n < 2147483647.0 ? (int)n : 0;
}

int AppendCount(eMesh* append)
{
    return append ? append->GetVertexSize() : 0;
}
} // namespace

eRenderWorldObject::eRenderWorldObject()
    : m_fRelativeHeight(10.0f), m_eScaleType(eST_DISTANCE), m_dSelfAdaptCameraHeight(160000.0),
      m_dSize(1.0), m_eShowType(eSHT_ALL), m_nShowLevel(0), m_eColorType(eCT_UNIFORM),
      m_UniformColor(255, 0, 0, 255), m_fStartValue(-9999.0f)
{
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProgram("WorldPoint");
    pass->SetProjectionMode(ePM_PERSPECTIVE);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthFunc(eCF_LESS_EQUAL);
    pass->SetLineWidth(1.0f);
    pass->SetDepthWriteEnabled(1);
    pass->SetDepthCheckEnabled(1);
    pass->SetLightingEnabled(0);
    pass->SetDepthBiasSlopeScale(1.0f);
    pass->SetDepthBiasConstant(10.0f);
    SetMaterial(material);
}

// The colour table and the append meshes go with their last holders; deleting a texture or
// a mesh deletes its OpenGL objects.
eRenderWorldObject::~eRenderWorldObject()
{
    m_pColorTableTexture.Reset();
    m_arAppendMeshes.clear();
    m_arObjectIds.clear();
}

void eRenderWorldObject::SetColorTable(std::string file)
{
    m_pColorTableTexture.Reset(); // freed here unless a copy still holds it
    m_pColorTableTexture.Reset(
        eTextureOperator::GetSingleton().CreateTexture(eString(file), eTWM_REPEAT, eTFM_LINEAR));
}

double eRenderWorldObject::ComputeScaleFactor(double& distance)
{
    switch (m_eScaleType)
    {
    case eST_DISTANCE:
        return distance / 800.0;
    case eST_FIXED:
        return 200.0;
    case eST_SELF_ADAPT:
        distance = std::min(distance, m_dSelfAdaptCameraHeight);
        return distance / 800.0;
    default:
        return 1.0;
    }
}

unsigned char eRenderWorldObject::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                         eViewport* viewport)
{
    CreateAppendMeshs();
    if (m_pColorTableTexture && m_pColorTableTexture->GetTextureID() == 0)
        m_pColorTableTexture->CreateTexture();
    unsigned char started = StartRender(engine, rs, camera, viewport);
    if (!started)
        return 0;
    for (size_t i = 0; i < m_arMeshes.size(); ++i)
        if (m_arMeshes[i])
            DrawWithAppendMesh(m_arMeshes[i],
                               i < m_arAppendMeshes.size() ? m_arAppendMeshes[i].Get() : nullptr);
    EndRender(engine, rs, camera, viewport);
    return started;
}

// Straight through OpenGL: the source stream and the flag stream feed one draw.
void eRenderWorldObject::DrawWithAppendMesh(eMesh* mesh, eMesh* append)
{
    eVertexData* vd = mesh->GetVertexData();
    int vertices = UploadedVertices(vd);
    if (vertices <= 0 || vertices < mesh->GetVertexSize())
        return; // nothing uploaded, or a buffer emptied by a reset: never read past it
    unsigned int mask = BindStream(vd);
    if (append && UploadedVertices(append->GetVertexData()) >= mesh->GetVertexSize())
        mask |= BindStream(append->GetVertexData());
    else if (!(mask & (1u << eAI_ATTRIB12)))
        glVertexAttrib2f(eAI_ATTRIB12, 0.0f, 0.0f); // no flags: every object drawn plainly

    eIndexData* id = mesh->GetIndexData();
    eHardwareIndexBuffer* ib = id->GetHardwareBuffer();
    unsigned int mode = (unsigned int)mesh->GetOperationType();
    if (ib && ib->GetBufferID() && ib->GetIndexCount() > 0)
    {
        GLut::BindBuffer(kElementArrayBuffer, ib->GetBufferID());
        int count = std::min(id->GetIndexSize(), ib->GetSizeInBytes() / 2);
        glDrawElements(mode, count, GL_UNSIGNED_SHORT, nullptr);
        GLut::BindBuffer(kElementArrayBuffer, 0);
    }
    else
    {
        int count = (int)id->GetIndexBuffer().size();
        if (count == 0)
            count = mesh->GetVertexSize();
        glDrawArrays(mode, 0, std::min(count, vertices));
    }
    for (unsigned int i = 0; i < 16; ++i)
        if (mask & (1u << i))
            GLut::DisableVertexAttribArray(i);
    GLut::BindBuffer(kArrayBuffer, 0);
}

unsigned char eRenderWorldObject::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                              eCamera* camera, eViewport* viewport)
{
    eRenderObject::StartRender(engine, rs, camera, viewport);
    double distance = camera->GetDistance();
    float s = (float)(m_dSize * ComputeScaleFactor(distance));
    eMatrix4T<float> point = m_PointMatrix * eMatrix4T<float>::Scale(s, s, 1.0f);
    eVector3T<float> high, low;
    DoubleToTwoFloat(camera->GetReferenceCenter(), high, low);

    eTechnique* technique = m_pMaterial ? m_pMaterial->GetTechnique(0) : nullptr;
    ePass* pass = technique ? technique->GetPass(0) : nullptr;
    eRenderProgram* rp = pass ? engine->GetRenderProgram(pass->GetProgram()) : nullptr;
    if (!rp)
        return 0; // nothing to draw with
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    float color[4] = {(float)(m_UniformColor.x / 255.0), (float)(m_UniformColor.y / 255.0),
                      (float)(m_UniformColor.z / 255.0), (float)(m_UniformColor.w / 255.0)};
    p->Uniform1i(u->m_nCustom[0], m_eShowType);
    p->Uniform1i(u->m_nCustom[1], m_nShowLevel);
    p->Uniform1i(u->m_nCustom[2], m_eColorType);
    p->UniformVector4(u->m_nCustom[3], color);
    p->Uniform1f(u->m_nCustom[4], m_fStartValue);
    p->Uniform1f(u->m_nCustom[5], (float)distance);
    p->UniformMatrix4(u->m_nCustom[6], 1, 0, point.Ptr());
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, m_Matrix.Ptr());
    p->Uniform3f(u->m_nCustom[7], high.x, high.y, high.z);
    p->Uniform3f(u->m_nCustom[8], low.x, low.y, low.z);
    p->Uniform1f(u->m_nCustom[9], 0.0f);
    p->Uniform1i(u->m_nCustom[10], m_nProjectionKind);
    p->Uniform1f(u->m_nCustom[11], m_fRelativeHeight);
    if (m_eColorType == eCT_COLOR_TABLE && m_pColorTableTexture &&
        m_pColorTableTexture->GetTextureID() != 0)
    {
        GLut::ActiveTexture(kColorTableUnit);
        glBindTexture(GL_TEXTURE_2D, m_pColorTableTexture->GetTextureID());
        p->Uniform1i(u->m_nCustom[12], 3);
    }
    return 1;
}

void eRenderWorldObject::CreateAppendMeshs()
{
    if (m_arAppendMeshes.size() == m_arMeshes.size())
        return;
    // Meshes that have their append mesh keep it; the ones added since get theirs.
    for (size_t m = m_arAppendMeshes.size(); m < m_arMeshes.size(); ++m)
    {
        eMesh* source = m_arMeshes[m];
        std::vector<int> ids;
        eMesh* append = nullptr;
        if (source)
        {
            // With the processor copy gone the source reads as empty.
            bool held = !source->GetVertexData()->GetVertexBuffer().empty();
            int count = held ? source->GetVertexSize() : 0;
            append = new eMesh();
            append->SetOperationType(source->GetOperationType());
            append->SetVertexType(kAppendVertexType);
            append->GetVertexData()->AddElement(eVET_UNSIGNED_BYTE, eVEC_2, eAI_ATTRIB12, 0);
            append->SetVertexSize(count);
            std::vector<unsigned char>& bytes = append->GetVertexData()->GetVertexBuffer();
            std::fill(bytes.begin(), bytes.end(), (unsigned char)0);
            append->GetVertexData()->Create();
            ids.reserve((size_t)count);
            for (int i = 0; i < count; ++i)
                ids.push_back(ObjectNumber(source, i));
        }
        m_arAppendMeshes.push_back(eShared<eMesh>(append));
        m_arObjectIds.push_back(ids);
    }
}

void eRenderWorldObject::UpdateAppendMesh(std::vector<AvoidBound> const& bounds)
{
    CreateAppendMeshs();
    for (eMesh* append : m_arAppendMeshes)
        if (append)
        {
            std::vector<unsigned char>& bytes = append->GetVertexData()->GetVertexBuffer();
            std::fill(bytes.begin(), bytes.end(), (unsigned char)0);
        }
    size_t m = 0;
    int i = 0, r = 0, c = 0;
    for (AvoidBound const& bound : bounds)
    {
        if (m >= m_arAppendMeshes.size())
            break;
        unsigned char a = bound.m_bVisible;
        unsigned char b = bound.m_bSelected == 0 ? 1 : 0;
        bool writeNothing = a == 1 && b == 1;
        if (i >= AppendCount(m_arAppendMeshes[m]))
        {
            if (++m >= m_arAppendMeshes.size())
                break;
            i = r = c = 0;
        }
        eMesh* append = m_arAppendMeshes[m];
        std::vector<int> const& ids = m_arObjectIds[m];
        int limit = std::min(AppendCount(append), (int)ids.size());
        for (; r < limit && ids[(size_t)r] == c; ++i, ++r)
            if (!writeNothing)
            {
                unsigned char* flags = append->GetVertexData()->GetVertex(i);
                flags[0] = a;
                flags[1] = b;
            }
        if (r < limit)
            c = ids[(size_t)r];
    }
    for (eMesh* append : m_arAppendMeshes)
        if (append)
        {
            append->GetVertexData()->Delete();
            append->GetVertexData()->Create();
        }
}

} // namespace KYR
