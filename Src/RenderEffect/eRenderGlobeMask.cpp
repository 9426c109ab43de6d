#include "eRenderGlobeMask.h"
#include "GLut.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cmath>

namespace KYR
{

namespace
{

unsigned int const kQueueId = 9;
// The world is cut into blocks of at most this many degrees a side.
double const kBlockDegrees = 36.0;

void RectToFloats(eRect2D const& r, float out[4])
{
    r.ToFloat4(out);
}

} // namespace

eRenderGlobeMask::eRenderGlobeMask()
    : m_rcWorld(-180.0, 90.0, 180.0, -90.0), m_BackgroundColor(0, 0, 0, 255)
{
    m_nRenderQueueId = kQueueId;
    // The render object holds, draws and uploads them; copies share them.
    AddMesh(BuildPatch());
    SetMaterial(BuildMaterial());
    BuildBlocks();
}

// The count from the world's width goes to the rows and the count from its height to the
// columns, so that the rows are 18 degrees high and the columns 72 degrees wide; the cells'
// height comes out negative, and each block's bottom lies 18 degrees below its top.
void eRenderGlobeMask::BuildBlocks()
{
    int const rows = (int)std::ceil((m_rcWorld.right - m_rcWorld.left) / kBlockDegrees);
    int const columns = (int)std::ceil((m_rcWorld.top - m_rcWorld.bottom) / kBlockDegrees);
    double const width = (m_rcWorld.right - m_rcWorld.left) / columns;
    double const height = (m_rcWorld.bottom - m_rcWorld.top) / rows;
    m_arBlocks.clear();
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < columns; ++c)
        {
            double left = c * width + m_rcWorld.left;
            double top = r * height + m_rcWorld.top;
            m_arBlocks.push_back(eRect2D(left, top, left + width, top + height));
        }
}

// The unit square in kPatchSide x kPatchSide vertices, x across and y down, as 16-bit
// triangles.
eMesh* eRenderGlobeMask::BuildPatch()
{
    eMesh* mesh = new eMesh();
    mesh->SetOperationType(eOT_TRIANGLE_LIST);
    mesh->SetVertexType(1);
    mesh->GetVertexData()->AddElement(eVET_FLOAT, eVEC_2, eAI_POSITION, 0);
    mesh->SetVertexSize(kPatchSide * kPatchSide);
    for (int i = 0; i < kPatchSide; ++i)
        for (int j = 0; j < kPatchSide; ++j)
        {
            float* v = mesh->GetVertex(i * kPatchSide + j);
            v[0] = (float)(j / (double)(kPatchSide - 1));
            v[1] = (float)(i / (double)(kPatchSide - 1));
        }
    eIndexData* indices = mesh->GetIndexData();
    for (int i = 0; i + 1 < kPatchSide; ++i)
        for (int j = 0; j + 1 < kPatchSide; ++j)
        {
            unsigned short a = (unsigned short)(i * kPatchSide + j);
            unsigned short b = (unsigned short)((i + 1) * kPatchSide + j);
            for (unsigned short k : {a, b, (unsigned short)(b + 1), a, (unsigned short)(b + 1),
                                     (unsigned short)(a + 1)})
                indices->AddIndex(k);
        }
    return mesh;
}

eMaterial* eRenderGlobeMask::BuildMaterial()
{
    eMaterial* material = new eMaterial();
    material->SetName("eRenderGlobeMask");
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProjectionMode(ePM_PERSPECTIVE);
    pass->SetProgram("GlobeMask");
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(0);
    pass->SetDiffuse(eVector4T<float>(255.0f, 0.0f, 0.0f, 255.0f));
    return material;
}

void eRenderGlobeMask::SetMaskTexture(eString path, eRect2D bound)
{
    m_pMaskTexture.Reset(
        eTextureOperator::GetSingleton().CreateTexture(path, eTWM_CLAMP_TO_EDGE, eTFM_LINEAR));
    m_rcMaskBound = bound;
}

void eRenderGlobeMask::SetBackgroundColor(eVector4T<unsigned char> color)
{
    m_BackgroundColor = color;
}

unsigned char eRenderGlobeMask::Initialize(eRenderEngine* engine)
{
    eRenderObject::Initialize(engine);
    if (m_pMaskTexture)
        m_pMaskTexture->CreateTexture();
    return 1;
}

unsigned char eRenderGlobeMask::UnInitialize(eRenderEngine*)
{
    DestroyBuffer();
    if (m_pTexture)
        m_pTexture->DestroyTexture();
    m_bInitialized = 0;
    if (m_pMaskTexture)
        m_pMaskTexture->DestroyTexture();
    return 1;
}

unsigned char eRenderGlobeMask::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                       eViewport* viewport)
{
    if (!StartRender(engine, rs, camera, viewport))
        return 0;
    eTechnique* technique = m_pMaterial ? m_pMaterial->GetBestTechnique() : nullptr;
    ePass* pass = technique ? technique->GetPass(0) : nullptr;
    eRenderProgram* rp = engine->GetRenderProgram(pass);
    int blockLocation = -1;
    if (rp && rp->GetProgram())
    {
        eProgram* p = rp->GetProgram();
        eShaderUniform* u = rp->GetUniform();
        float rect[4];
        RectToFloats(m_rcMaskBound, rect);
        float const colour[4] = {m_BackgroundColor.x / 255.0f, m_BackgroundColor.y / 255.0f,
                                 m_BackgroundColor.z / 255.0f, m_BackgroundColor.w / 255.0f};
        p->Uniform1i(u->m_nCustom[eR_PROJECTION_KIND], m_nProjectionKind);
        p->UniformVector4Scaled(u->m_nCustom[eR_MASK_RECT], 1.0f, rect);
        p->UniformVector4(u->m_nCustom[eR_BACKGROUND], colour);
        blockLocation = u->m_nCustom[eR_BLOCK_RECT];
    }
    if (m_pMaskTexture)
    {
        m_pMaskTexture->CreateTexture();
        GLut::ActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, m_pMaskTexture->GetTextureID());
    }
    eMesh* patch = m_arMeshes.empty() ? nullptr : m_arMeshes[0];
    for (eRect2D const& block : m_arBlocks)
    {
        float rect[4];
        RectToFloats(block, rect);
        GLut::Uniform4fv(blockLocation, 1, rect);
        if (patch)
            rs->DrawIndexed(patch->GetOperationType(), patch->GetVertexData(),
                            patch->GetIndexData(), false);
    }
    EndRender(engine, rs, camera, viewport);
    return 1;
}

} // namespace KYR
