#include "eRenderPart.h"
#include "eCoordSys.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include <cstring>

namespace KYR
{

namespace
{
unsigned int const kPartVertexType = 0x85;
int const kPartStride = 24; // float 3 position, float 2 texture coordinate, 4 colour bytes
} // namespace

eRenderPart::eRenderPart() : m_pParent(nullptr), m_bDirty(1), m_bInitialized(0) {}

// The stores go with the last copy that holds them.
eRenderPart::~eRenderPart() {}

eRenderable::Type eRenderPart::GetType()
{
    return eRT_PART;
}

unsigned char eRenderPart::Initialize(eRenderEngine*)
{
    m_bInitialized = 1;
    return 1;
}

unsigned char eRenderPart::UnInitialize(eRenderEngine*)
{
    DestroyBuffer();
    m_bInitialized = 0;
    m_bDirty = 0;
    return 1;
}

eRect2D eRenderPart::GetBounds()
{
    return eRect2D();
}

void eRenderPart::DestroyBuffer()
{
    m_pVertexData.Reset();
    m_pIndexData.Reset();
}

bool eRenderPart::BeginDraw(eRenderEngine* engine, eVector4T<unsigned char> const& color)
{
    if (!m_bInitialized)
        Initialize(engine);
    if (m_bDirty)
        CreateBuffer(engine);
    if (!m_pVertexData || !m_pIndexData)
        return false;
    eRenderProgram* rp = engine->GetRenderProgram(eString(ProgramName()));
    if (!rp || !rp->GetProgram())
        return false;
    float c[4] = {(float)(color.x / 255.0), (float)(color.y / 255.0), (float)(color.z / 255.0),
                  (float)(color.w / 255.0)};
    rp->GetProgram()->UniformVector4(rp->GetUniform()->m_nColor, c);
    return true;
}

void eRenderPart::NewStores()
{
    eVertexData* vd = new eVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vd->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
    vd->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
    vd->SetVertexType(kPartVertexType);
    m_pVertexData.Reset(vd);
    m_pIndexData.Reset(new eIndexData());
}

void eRenderPart::AddVertex(eCoordSys* coordSys, double x, double y, float u, float v,
                            eVector4T<unsigned char> const& color)
{
    // Pixels become world units of the reference scale, one unit a pixel; the compose
    // object's model matrix scales them to the view at draw time.
    float f[5] = {(float)(coordSys ? coordSys->PixelToWorld(eSM_PLANE, 1.0, x) : x),
                  (float)(coordSys ? coordSys->PixelToWorld(eSM_PLANE, 1.0, y) : y), 0.0f, u, v};
    unsigned char vertex[kPartStride];
    std::memcpy(vertex, f, sizeof f);
    unsigned char rgba[4] = {color.x, color.y, color.z, color.w};
    std::memcpy(vertex + sizeof f, rgba, sizeof rgba);
    m_pVertexData->AddVertex(vertex, 1);
}

void eRenderPart::UploadStores()
{
    m_pVertexData->Create();
    m_pIndexData->Create();
    m_bDirty = 0;
}

} // namespace KYR
