#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eGlobeModel.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueueVisitor.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cmath>

namespace KYR
{

eTileSet::eTileSet() : m_eSceneMode(eSM_GLOBE), m_pCoordSys(nullptr), m_pMesh(nullptr) {}

eTileSet::eTileSet(eTileKey key, eRect2D const& bounds, eSceneMode mode, eCoordSys* coordSys)
    : m_rcBounds(bounds), m_Key(key), m_eSceneMode(mode), m_pCoordSys(coordSys), m_pMesh(nullptr)
{
    if (m_pCoordSys)
        m_pCoordSys->LogicalToWorld(m_eSceneMode, m_rcBounds.CenterPoint(), m_vCenter, 0.0);
}

eTileSet::~eTileSet()
{
    delete m_pMesh;
}

eMesh* eTileSet::GetMesh()
{
    if (!m_pMesh && m_pCoordSys && !m_rcBounds.IsEmpty())
        BuildMesh();
    return m_pMesh;
}

// Position relative to the tile's centre, the surface normal, and the logical point.
void eTileSet::BuildMesh()
{
    int const n = kGridSize;
    m_pMesh = new eMesh();
    eVertexData* vd = m_pMesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_ATTRIB1, 0);
    vd->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
    std::vector<float> v;
    v.reserve((size_t)n * n * 8);
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < n; ++c)
        {
            ePoint2D p(m_rcBounds.left + m_rcBounds.Width() * c / (n - 1),
                       m_rcBounds.top - m_rcBounds.Height() * r / (n - 1));
            eVector3T<double> w;
            m_pCoordSys->LogicalToWorld(m_eSceneMode, p, w, 0.0);
            eVector3T<double> up(0.0, 0.0, 1.0);
            if (m_eSceneMode == eSM_GLOBE)
                up = w * (1.0 / std::sqrt(w.x * w.x + w.y * w.y + w.z * w.z));
            eVector3T<double> d = w - m_vCenter;
            float vertex[8] = {(float)d.x,  (float)d.y,  (float)d.z, (float)up.x,
                               (float)up.y, (float)up.z, (float)p.x, (float)p.y};
            v.insert(v.end(), vertex, vertex + 8);
        }
    m_pMesh->AddVertex(v.data(), n * n);
    m_pMesh->SetOperationType(eOT_TRIANGLE_LIST);
    eIndexData* id = m_pMesh->GetIndexData();
    for (int r = 0; r + 1 < n; ++r)
        for (int c = 0; c + 1 < n; ++c)
        {
            unsigned short a = (unsigned short)(r * n + c), b = (unsigned short)(a + 1);
            unsigned short d = (unsigned short)(a + n), e = (unsigned short)(d + 1);
            for (unsigned short i : {a, d, b, b, d, e})
                id->AddIndex(i);
        }
    vd->Create();
    id->Create();
}

unsigned char eTileSet::DrawMesh(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                 ePass* pass, unsigned char applyPass, eTexture* const* textures,
                                 int count, eRect2D* rect, double scale)
{
    bool ready = engine && rs && camera && pass && !pass->GetProgram().IsEmpty();
    eRenderProgram* rp = ready ? engine->GetRenderProgram(pass) : nullptr;
    eMesh* mesh = rp && rp->GetProgram() ? GetMesh() : nullptr;
    if (!mesh)
        return 0;
    eRenderQueueVisitor* visitor = applyPass ? engine->GetVisitor() : nullptr;
    if (visitor)
        visitor->BeginPass(pass);
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    eMatrix4T<float> world(
        eMatrix4T<double>::Translation(m_vCenter - camera->GetReferenceCenter()));
    world = camera->GetRelativeWorldMatrix() * world;
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
    p->UniformMatrix4(u->m_nViewMatrix, 1, 0, camera->GetRelativeViewMatrix().Ptr());
    p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0, camera->GetRelativeProjectionMatrix().Ptr());
    p->Uniform1f(u->m_nLightingEnabled, pass->IsLightingEnabled() ? 1.0f : 0.0f);
    p->UniformVector4(u->m_nAmbient, &pass->GetAmbient().x);
    p->UniformVector4(u->m_nDiffuse, &pass->GetDiffuse().x);
    p->UniformVector4(u->m_nSpecular, &pass->GetSpecular().x);
    p->Uniform1f(u->m_nShininess, pass->GetShininess());
    float r4[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    if (rect)
        rect->ToFloat4(r4);
    p->Uniform4f(p->GetUniformLocation("u_rasterRect"), r4[0], r4[1], r4[2], r4[3]);
    p->Uniform1f(p->GetUniformLocation("u_shadingScale"), (float)scale);
    p->Uniform1f(p->GetUniformLocation("u_sceneMode"), (float)m_eSceneMode);
    static char const* const kSamplers[] = {"u_texture0", "u_texture1", "u_texture2", "u_texture3"};
    for (int i = 0; i < count && i < 4; ++i)
    {
        if (textures[i])
            textures[i]->CreateTexture();
        GLut::ActiveTexture(GL_TEXTURE0 + i);
        glBindTexture(GL_TEXTURE_2D, textures[i] ? textures[i]->GetTextureID() : 0);
        p->Uniform1i(p->GetUniformLocation(kSamplers[i]), i);
        if (i == 0)
        {
            // Rasters come as luminance (made from a texture info) or as alpha (replaced
            // by an update); the program reads the channel that holds the value.
            GLint alpha = 0, luminance = 0;
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_ALPHA_SIZE, &alpha);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_LUMINANCE_SIZE, &luminance);
            p->Uniform1f(p->GetUniformLocation("u_valueInAlpha"),
                         alpha > 0 && luminance == 0 ? 1.0f : 0.0f);
        }
    }
    rs->DrawIndexed(mesh->GetOperationType(), mesh->GetVertexData(), mesh->GetIndexData(), false);
    for (int i = (count < 4 ? count : 4) - 1; i >= 0; --i)
    {
        GLut::ActiveTexture(GL_TEXTURE0 + i);
        glBindTexture(GL_TEXTURE_2D, 0);
    }
    if (visitor)
        visitor->EndPass();
    return 1;
}

unsigned char eTileSet::RenderShading(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                      eViewport*, eTexture* texture, eRect2D* rect, ePass* pass,
                                      unsigned char applyPass, eTexture* colorTable, double scale,
                                      void*)
{
    eTexture* textures[2] = {texture, colorTable};
    return DrawMesh(engine, rs, camera, pass, applyPass, textures, 2, rect, scale);
}

unsigned char eTileSet::RenderImage(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                    eViewport*, eTexture* texture, eRect2D* rect, ePass* pass,
                                    unsigned char applyPass, eTexture* colorTable, double value,
                                    void*)
{
    eTexture* textures[2] = {texture, colorTable};
    return DrawMesh(engine, rs, camera, pass, applyPass, textures, 2, rect, value);
}

// The surface globe's, grow wind's and tiling's work fills these three in.
unsigned char eTileSet::RenderSurface(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                      eTexture*, eRect2D*, ePass*, unsigned char, eTexture*, double,
                                      eRasterGrid*, std::vector<eTexture*>*, unsigned int)
{
    return 0;
}

unsigned char eTileSet::RenderGrowth(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                     eTexture*, eRect2D*, ePass*, unsigned char, eTexture*, double,
                                     void*, eTexture*, float)
{
    return 0;
}

unsigned char eTileSet::RenderTiling(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                     eTexture*, eRect2D const&, eRect2D*, ePass*, unsigned char,
                                     eTexture*, double, double, eRasterGrid*,
                                     std::vector<eTexture*>*, int, std::vector<float>*)
{
    return 0;
}

} // namespace KYR
