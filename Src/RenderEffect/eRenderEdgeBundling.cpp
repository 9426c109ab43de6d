#include "eRenderEdgeBundling.h"
#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eDataSetFrame.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMatrix4.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderLineGrowSet.h"
#include "eRenderPointBundling.h"
#include "eRenderQueue.h"
#include "eRenderSystem.h"
#include <algorithm>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{

char const* const kSource = "Src/RenderEffect/eRenderEdgeBundling";
unsigned int const kColourVertexType = 4;
// The trace colour, 170, 90, 93 over 255.
float const kTraceRed = 170.0f / 255.0f;
float const kTraceGreen = 90.0f / 255.0f;
float const kTraceBlue = 93.0f / 255.0f;
// What this object's own stores are drawn with: a dark grey line 6 pixel units wide.
float const kDashGrey = 35.0f / 255.0f;
float const kDashAlpha = 0.5f;
double const kDashWidth = 6.0;
float const kDashMiterLimit = 5.0f;

} // namespace

eRenderEdgeBundling::eRenderEdgeBundling()
    : m_bInitialized(0), m_pPointBundling(new eRenderPointBundling(this))
{
}

eRenderEdgeBundling::eRenderEdgeBundling(eRenderEdgeBundling const& other)
    : eRenderable(other), m_bInitialized(other.m_bInitialized), m_pTechnique(other.m_pTechnique),
      m_pVertexData(other.m_pVertexData), m_pIndexData(other.m_pIndexData),
      m_vPosition(other.m_vPosition), m_arPoints(other.m_arPoints),
      m_pPointBundling(new eRenderPointBundling(*other.m_pPointBundling))
{
    m_pPointBundling->m_pParent = this;
}

eRenderEdgeBundling& eRenderEdgeBundling::operator=(eRenderEdgeBundling const& other)
{
    if (this == &other)
        return *this;
    eRenderable::operator=(other);
    m_bInitialized = other.m_bInitialized;
    m_pTechnique = other.m_pTechnique;
    m_pVertexData = other.m_pVertexData;
    m_pIndexData = other.m_pIndexData;
    m_vPosition = other.m_vPosition;
    m_arPoints = other.m_arPoints;
    // The helper reads the path through its parent, so each object keeps a helper of its own.
    m_pPointBundling.Reset(new eRenderPointBundling(*other.m_pPointBundling));
    m_pPointBundling->m_pParent = this;
    return *this;
}

// The helper and the stores go with their last holders.
eRenderEdgeBundling::~eRenderEdgeBundling() {}

eRenderable::Type eRenderEdgeBundling::GetType()
{
    return eRT_NONE;
}

unsigned char eRenderEdgeBundling::Initialize(eRenderEngine* engine)
{
    if (m_pVertexData)
        m_pVertexData->Create();
    if (m_pIndexData)
        m_pIndexData->Create();
    m_pPointBundling->Initialize(engine);
    m_bInitialized = 1;
    return 1;
}

unsigned char eRenderEdgeBundling::UnInitialize(eRenderEngine* engine)
{
    m_pVertexData.Reset();
    m_pIndexData.Reset();
    m_pPointBundling->UnInitialize(engine);
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderEdgeBundling::Reset(eRenderEngine* engine)
{
    UnInitialize(engine);
    return 1;
}

unsigned char eRenderEdgeBundling::Create(eCamera* camera, double distance, eCanvas* canvas)
{
    eCoordSys* coordSys = canvas ? canvas->GetCoordSys() : nullptr;
    if (coordSys)
        for (ePoint2D& p : m_arPoints)
            coordSys->MapToLogicalPoint(p, p);
    if (!m_arPoints.empty())
        m_vPosition = eVector3T<double>(m_arPoints[0].x, m_arPoints[0].y, 0.0);
    m_pVertexData.Reset(new eVertexData());
    m_pIndexData.Reset(new eIndexData());
    m_pPointBundling->Create(camera, distance, canvas);
    return 1;
}

unsigned char eRenderEdgeBundling::Query(eRenderEngine*, eCamera*, eQueryFilter*, double&)
{
    return 1;
}

unsigned char eRenderEdgeBundling::UpdateRenderQueue(eRenderEngine* engine, eCamera* camera,
                                                     eViewport* viewport, eRenderQueue* queue)
{
    if (!m_pTechnique)
        m_pTechnique.Reset(CreateTechnique("DashLine2D", camera));
    m_pPointBundling->UpdateRenderQueue(engine, camera, viewport, queue);
    if (queue)
        queue->GetQueueGroup(kQueueGroup); // the helpers'; this object adds nothing to it
    return 1;
}

unsigned char eRenderEdgeBundling::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                          eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    eRenderProgram* program = engine && pass ? engine->GetRenderProgram(pass) : nullptr;
    if (!program || !program->GetProgram())
        return 0;
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    eVector3T<double> centre = camera ? camera->GetReferenceCenter() : eVector3T<double>();
    eMatrix4T<float> world = eMatrix4T<float>::Translation((float)(m_vPosition.x - centre.x),
                                                           (float)(m_vPosition.y - centre.y), 0.0f);
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());

    double pixel = eRenderLineGrowSet::PixelSize(engine);
    p->Uniform1i(u->m_nCustom[eR_DASH_POSITION_KIND], 0);
    p->Uniform4f(u->m_nColor, kDashGrey, kDashGrey, kDashGrey, kDashAlpha);
    p->Uniform1f(u->m_nCustom[eR_DASH_OPACITY], 1.0f);
    p->Uniform1f(u->m_nCustom[eR_DASH_WIDTH], (float)(pixel * kDashWidth));
    // Colours from the stream, feathered edges, solid, mitred up to five half widths.
    p->Uniform1f(u->m_nCustom[eR_DASH_STREAM_WEIGHT], 1.0f);
    p->Uniform1f(u->m_nCustom[eR_DASH_FEATHER], 1.0f);
    p->Uniform1f(u->m_nCustom[eR_DASH_LENGTH], 0.0f);
    p->Uniform1f(u->m_nCustom[eR_DASH_GAP], 0.0f);
    p->Uniform1f(u->m_nCustom[eR_DASH_OFFSET], 0.0f);
    p->Uniform1f(u->m_nCustom[eR_DASH_MITER_LIMIT], kDashMiterLimit);
    p->Uniform1f(u->m_nCustom[eR_DASH_EDGE], (float)pixel);
    if (rs)
        rs->DrawIndexed(eOT_TRIANGLE_LIST, m_pVertexData, m_pIndexData, false);
    return 1;
}

// ---------------------------------------------------------------------------------------------
// What the helpers share
// ---------------------------------------------------------------------------------------------

eTechnique* eRenderEdgeBundling::CreateTechnique(eString const& program, eCamera* camera)
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    if (eDataSetFrame::SceneMode(camera) != eSM_PLANE)
    {
        Eassert("false", kSource, __LINE__);
        return technique;
    }
    pass->SetProgram(program);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(0);
    pass->SetDepthWriteEnabled(0);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetLightingEnabled(0);
    return technique;
}

eVertexData* eRenderEdgeBundling::CreateTraceColours(int n, int perPoint)
{
    eVertexData* data = new eVertexData();
    data->SetVertexType(kColourVertexType);
    data->AddElement(eVET_FLOAT, eVEC_4, eAI_COLOR, 0);
    if (n <= 0)
        return data;
    data->SetVertexSize(n * perPoint);
    float* out = reinterpret_cast<float*>(data->GetVertex(0));
    for (int i = 0; i < n; ++i)
    {
        float const place = (float)i / (float)n;
        for (int k = 0; k < perPoint; ++k, out += 4)
        {
            out[0] = kTraceRed;
            out[1] = kTraceGreen;
            out[2] = kTraceBlue;
            out[3] = place;
        }
    }
    return data;
}

void eRenderEdgeBundling::UploadPadded(eVertexData* data, int pad)
{
    if (!data)
        return;
    int count = data->GetVertexSize();
    data->SetVertexSize(count + pad); // the new vertices are zero bytes
    data->Create();
    data->SetVertexSize(count);
}

unsigned char eRenderEdgeBundling::DrawWindow(eRenderEngine* engine, eCamera* camera,
                                              eTechnique* technique, char const* name,
                                              eVector3T<double> const& anchor,
                                              eVertexData* geometry, eVertexData* colours, int n,
                                              int perItem, int& traceIndex)
{
    ePass* pass = technique ? technique->GetPass(0) : nullptr;
    eRenderProgram* program = engine && pass ? engine->GetRenderProgram(pass) : nullptr;
    // A pass without a program is the one made outside the plane map: nothing draws there.
    if (!program || !program->GetProgram())
        return 0;
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    eVector3T<double> centre = camera ? camera->GetReferenceCenter() : eVector3T<double>();
    eMatrix4T<float> world = eMatrix4T<float>::Translation(
        (float)(anchor.x - centre.x), (float)(anchor.y - centre.y), (float)(anchor.z - centre.z));
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
    if (pass->GetProgram() == name)
    {
        p->Uniform1f(u->m_nCustom[eR_PROJECTION_MODE], 0.0f);
        p->Uniform1f(u->m_nCustom[eR_EARTH_PIXELS],
                     (float)(eMathEngine::EARTH_CIRCUMFERENCE / engine->GetRenderResolution(1)));
    }
    p->Uniform1f(u->m_nLightingEnabled, pass->IsLightingEnabled() ? 1.0f : 0.0f);

    bool bound = eDataSetFrame::BindVertexData(geometry) != 0;
    bound = eDataSetFrame::BindVertexData(colours) != 0 && bound;
    if (bound && n > 0)
    {
        // The window stands on item traceIndex and moves on every fourth frame; once past the
        // last item it starts again from the first.
        int first = 0;
        if (traceIndex < n)
        {
            first = traceIndex * perItem;
            if ((engine->GetFrameNumber() & 3) == 0)
                ++traceIndex;
        }
        else
            traceIndex = 0;
        float const share = 1.0f / (float)n;
        p->Uniform1f(u->m_nCustom[eR_TRACE_SCALE], (float)(1.0 / (double)(share * 4.0f)));
        p->Uniform1f(u->m_nCustom[eR_TRACE_HEAD], std::max(0.0f, (float)traceIndex * share));
        // Five items also near the end: what lies past the last is padding that draws nothing.
        glDrawArrays(GL_TRIANGLES, first, kWindowItems * perItem);
    }
    eDataSetFrame::UnbindVertexData(colours);
    eDataSetFrame::UnbindVertexData(geometry);
    return bound ? 1 : 0;
}

} // namespace KYR
