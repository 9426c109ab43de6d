#include "eRenderGrowWind.h"
#include "GLut.h"
#include "eBase.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eGlobeModel.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderQueueVisitor.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <utility>
#include <vector>

namespace KYR
{

namespace
{

char const* const kSource = "Src/RenderEffect/eRenderGrowWind";
unsigned int const kSolidQueueGroup = 6;
int const kDefaultParticleCount = 262144;
// The overlay fades out as the camera comes closer than kFadeStart, and is gone at
// kFadeStart - kFadeSpan.
double const kFadeStart = 5775000.0;
double const kFadeSpan = 2887500.0;
// Share of the trail picture kept from one frame to the next.
float const kTrailFade = 0.996f;
float const kSpeedFactor = 0.25f;
float const kDropRate = 0.003f;
float const kDropRateBump = 0.01f;
// The side of the state textures stays below this, so its square fits an int.
int const kMaxResolution = 46340;

void FreeFrameBuffer(unsigned int name)
{
    GLut::DeleteFrameBuffers(1, &name);
}

// Random values in 0..32767, the range the seeding was made for (rand() may reach further).
int Random15()
{
    return std::rand() & 0x7FFF;
}

ePass* MakePass(eTechnique* technique, char const* program)
{
    ePass* pass = technique->CreatePass();
    pass->SetProgram(program);
    return pass;
}

eTexture* NewTexture(eImageData* image, unsigned char autoRelease, int filter)
{
    eTexture* texture = new eTexture();
    texture->SetAutoRelease(autoRelease);
    texture->SetImageData(image);
    texture->SetTextureWrapS(GL_CLAMP_TO_EDGE);
    texture->SetTextureWrapT(GL_CLAMP_TO_EDGE);
    texture->SetTextureMinFilter(filter);
    texture->SetTextureMagFilter(filter);
    return texture;
}

// Two textures uploaded from one image that neither keeps: the pair starts equal and the
// processor copy goes at once. Both stay null when the image or an upload fails.
void MakeTexturePair(eImageData* image, eShared<eTexture>& first, eShared<eTexture>& second)
{
    first.Reset();
    second.Reset();
    if (!image || !image->m_pData)
        return;
    eShared<eTexture> a(NewTexture(image, 0, GL_NEAREST));
    eShared<eTexture> b(NewTexture(image, 0, GL_NEAREST));
    bool const uploaded = a->CreateTexture() && b->CreateTexture();
    a->SetImageData(nullptr);
    b->SetImageData(nullptr);
    if (!uploaded)
        return;
    first = a;
    second = b;
}

} // namespace

eRenderGrowWind::eRenderGrowWind()
    : m_initialized(false), m_savedFrameBuffer(0), m_particleCount(kDefaultParticleCount),
      m_particleResolution(0), m_opacity(1.0)
{
    m_globeTechnique.Reset(new eTechnique());
    ePass* pass = MakePass(m_globeTechnique, "SurfaceTileMask");
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(1);
    pass->SetDepthFunc(eCF_LESS_EQUAL);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetLightingEnabled(0);
    CreateTechnique();
}

// Everything goes with its last holder.
eRenderGrowWind::~eRenderGrowWind() {}

eRenderable::Type eRenderGrowWind::GetType()
{
    return eRT_GROW_WIND;
}

void eRenderGrowWind::CreateTechnique()
{
    eShared<eTechnique>* techniques[3] = {&m_screenTechnique, &m_drawTechnique, &m_updateTechnique};
    char const* programs[3] = {"WindScreen", "WindDraw", "WindUpdate"};
    for (int i = 0; i < 3; ++i)
    {
        techniques[i]->Reset(new eTechnique());
        ePass* pass = MakePass(*techniques[i], programs[i]);
        pass->SetDepthCheckEnabled(0);
        pass->SetDepthWriteEnabled(0);
        pass->SetDepthBiasSlopeScale(0.0f);
        pass->SetDepthBiasConstant(0.0f);
        pass->SetPointSpriteEnabled(1);
        pass->SetLightingEnabled(0);
        pass->SetAmbient(eVector4T<float>(0.3f, 0.3f, 0.3f, 1.0f));
        pass->SetDiffuse(eVector4T<float>(0.6f, 0.6f, 0.6f, 1.0f));
        pass->SetSpecular(eVector4T<float>(0.3f, 0.3f, 0.3f, 1.0f));
        pass->SetShininess(10.0f);
    }
    m_drawTechnique->GetPass(0)->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
}

// ---------------------------------------------------------------------------------------------
// Settings
// ---------------------------------------------------------------------------------------------

void eRenderGrowWind::SetColorTable(eColorTable* table)
{
    if (!table)
        return;
    if (!m_colorTable)
        m_colorTable.Reset(new eColorTable());
    *m_colorTable = *table;
}

void eRenderGrowWind::SetWindData(tagWindData* data)
{
    if (!data)
        return;
    m_windData.path = data->path;
    m_windData.width = data->width;
    m_windData.height = data->height;
    m_windData.uMin = data->uMin;
    m_windData.uMax = data->uMax;
    m_windData.vMin = data->vMin;
    m_windData.vMax = data->vMax;
}

// ---------------------------------------------------------------------------------------------
// Life cycle
// ---------------------------------------------------------------------------------------------

unsigned char eRenderGrowWind::Initialize(eRenderEngine*)
{
    if (m_initialized)
        return 1;
    CreateWindData();
    CreateColorTable();
    CreateParticleCount();
    CreateVertexData();
    CreateMaskTexture();
    CreateFrameBuffer();
    CreateBufferTexture();
    m_initialized = true;
    return 1;
}

unsigned char eRenderGrowWind::UnInitialize(eRenderEngine*)
{
    m_maskTexture.Reset();
    m_initialized = false;
    return 1;
}

unsigned char eRenderGrowWind::Reset(eRenderEngine* engine)
{
    UnInitialize(engine);
    return 1;
}

void eRenderGrowWind::DestroyFrameBuffer()
{
    m_frameBuffer.Reset();
}

eImageData* eRenderGrowWind::LoadImageData(eString const& path, int bits)
{
    if (path.IsEmpty())
        return nullptr; // nothing asked for: no message either
    eFileStream stream;
    if (!stream.Open(path.Cstr(), 2, 8192))
        return nullptr;
    eByteArray bytes;
    unsigned char const loaded = stream.LoadByteArray(bytes);
    stream.Close();
    if (!loaded || bytes.GetSize() == 0)
        return nullptr;
    return eFileParserToolkit::LoadImageData(bytes, bits);
}

void eRenderGrowWind::CreateWindData()
{
    eImageData* image = LoadImageData(m_windData.path, 32);
    if (!image)
        return;
    m_windData.width = image->m_nWidth;
    m_windData.height = image->m_nHeight;
    m_windTexture.Reset(NewTexture(image, 1, GL_LINEAR));
    m_windTexture->CreateTexture();
}

void eRenderGrowWind::CreateColorTable()
{
    if (!m_colorTable)
        return;
    eImageData* image = new eImageData();
    image->Allocate(1, 256, 32);
    double const floor = m_colorTable->GetFloor(), ceiling = m_colorTable->GetCeiling();
    for (int i = 0; i < 256; ++i)
    {
        int const rgba = (int)m_colorTable->GetColor(floor + i * (ceiling - floor) * 0.00390625);
        unsigned char* px = image->m_pData + (size_t)i * (size_t)image->m_nPitch;
        px[0] = EREDVAL(rgba);
        px[1] = EGREENVAL(rgba);
        px[2] = EBLUEVAL(rgba);
        px[3] = EALPHAVAL(rgba);
    }
    m_colorTexture.Reset(NewTexture(image, 1, GL_LINEAR));
    m_colorTexture->CreateTexture();
}

void eRenderGrowWind::CreateParticleCount()
{
    int side = m_particleCount > 0 ? (int)std::ceil(std::sqrt((double)m_particleCount)) : 0;
    if (side > kMaxResolution)
        side = kMaxResolution;
    m_particleResolution = side;
    m_particleCount = side * side;

    // Random start positions: every byte of the state is random.
    eImageData image;
    if (side > 0 && image.Allocate(side, side, 32))
    {
        std::srand((unsigned int)std::time(nullptr));
        size_t const bytes = (size_t)image.m_nPitch * (size_t)side;
        for (size_t i = 0; i < bytes; ++i)
            image.m_pData[i] = (unsigned char)std::floor(Random15() / 32767.0 * 255.0);
    }
    MakeTexturePair(&image, m_particleTexture, m_particleBackTexture);

    // Each particle's only vertex value is its number, from which "WindDraw" finds its texel.
    m_particleIndices.Reset(new eVertexData());
    m_particleIndices->SetVertexType(1);
    m_particleIndices->AddElement(eVET_FLOAT, eVEC_1, eAI_POSITION, 0);
    std::vector<float> numbers((size_t)m_particleCount);
    for (int i = 0; i < m_particleCount; ++i)
        numbers[(size_t)i] = (float)i;
    m_particleIndices->AddVertex(numbers.data(), m_particleCount);
    m_particleIndices->Create();
    m_particleIndices->GetVertexBuffer().clear(); // the card holds the numbers now
}

void eRenderGrowWind::CreateVertexData()
{
    float const corners[12] = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f,
                               0.0f, 1.0f, 1.0f, 0.0f, 1.0f, 1.0f};
    m_quadVertices.Reset(new eVertexData());
    m_quadVertices->SetVertexType(1);
    m_quadVertices->AddElement(eVET_FLOAT, eVEC_2, eAI_POSITION, 0);
    m_quadVertices->AddVertex(corners, 6);
    m_quadVertices->Create();
}

void eRenderGrowWind::CreateMaskTexture()
{
    eImageData* image = LoadImageData(m_maskPath, 8);
    if (!image)
        return;
    m_maskTexture.Reset(NewTexture(image, 1, GL_LINEAR));
    m_maskTexture->SetAutoMipMap(1);
    m_maskTexture->CreateTexture();
}

void eRenderGrowWind::CreateFrameBuffer()
{
    // The highest anisotropy goes to whatever texture is bound now, where the driver has it.
    if (epoxy_has_gl_extension("GL_EXT_texture_filter_anisotropic"))
    {
        GLfloat anisotropy = 1.0f;
        glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &anisotropy);
        glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, anisotropy);
    }
    GLint saved = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &saved);
    m_savedFrameBuffer = saved;
    unsigned int frameBuffer = 0;
    GLut::GenFrameBuffers(1, &frameBuffer);
    m_frameBuffer.Reset(frameBuffer, FreeFrameBuffer);
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, frameBuffer);
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, (unsigned int)m_savedFrameBuffer);
}

void eRenderGrowWind::CreateBufferTexture()
{
    eImageData image; // zeroed: no trails yet
    image.Allocate(kScreenWidth, kScreenHeight, 32);
    MakeTexturePair(&image, m_screenTexture, m_backTexture);
}

// ---------------------------------------------------------------------------------------------
// Drawing
// ---------------------------------------------------------------------------------------------

void eRenderGrowWind::BindFrameBuffer(eTexture* texture)
{
    if (!texture)
    {
        GLut::BindFrameBuffer(GL_FRAMEBUFFER, (unsigned int)m_savedFrameBuffer);
        return;
    }
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, m_frameBuffer);
    GLut::FrameBufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D,
                               texture->GetTextureID(), 0);
    unsigned int const status = GLut::CheckFrameBufferStatus(GL_FRAMEBUFFER);
    if (status != GL_FRAMEBUFFER_COMPLETE)
        Eassert("status == GL_FRAMEBUFFER_COMPLETE", kSource, 278);
}

void eRenderGrowWind::BindTexture(eTexture* texture, int unit)
{
    GLut::ActiveTexture(GL_TEXTURE0 + (unsigned int)unit);
    if (texture)
        texture->CreateTexture(); // at once when it is resident
    glBindTexture(GL_TEXTURE_2D, texture ? texture->GetTextureID() : 0);
}

eRenderProgram* eRenderGrowWind::ApplyPass(eRenderEngine* engine, eTechnique* technique)
{
    ePass* pass = technique ? technique->GetPass(0) : nullptr;
    if (!pass)
        return nullptr;
    engine->GetVisitor()->BeginPass(pass);
    eRenderProgram* rp = engine->GetRenderProgram(pass);
    // Without its program a pass would draw through the fixed pipeline: it draws nothing.
    return rp && rp->GetProgram() ? rp : nullptr;
}

unsigned int eRenderGrowWind::BindVertices(eVertexData* vertices)
{
    eHardwareVertexBuffer* buffer = vertices ? vertices->GetHardwareBuffer() : nullptr;
    if (!buffer)
        return 0;
    GLut::BindBuffer(GL_ARRAY_BUFFER, buffer->GetBufferID());
    int const stride = vertices->GetVertexStride();
    unsigned int enabled = 0;
    for (eVertexElement const& e : vertices->GetVertexElements())
    {
        GLut::VertexAttribPointer((unsigned int)e.m_eIndex, e.m_nCount, (unsigned int)e.m_eType,
                                  e.m_bNormalized, stride,
                                  reinterpret_cast<void const*>((size_t)e.m_nOffset));
        GLut::EnableVertexAttribArray((unsigned int)e.m_eIndex);
        enabled |= 1u << (unsigned int)e.m_eIndex;
    }
    return enabled;
}

void eRenderGrowWind::UnbindVertices(unsigned int enabled)
{
    for (unsigned int i = 0; i < 32; ++i)
        if (enabled & (1u << i))
            GLut::DisableVertexAttribArray(i);
}

unsigned char eRenderGrowWind::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                      eViewport* viewport)
{
    if (!m_initialized)
        Initialize(engine);
    if (!engine || !camera)
        return 1;
    double const d = camera->GetDistance();
    if (d < kFadeStart)
        m_opacity = 1.0 - (kFadeStart - d) / kFadeSpan;
    if (IsVisible() && m_opacity > 0.0)
        Draw(engine, rs, viewport ? viewport : camera->GetViewport());
    return 1;
}

unsigned char eRenderGrowWind::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                 eRenderQueue* queue)
{
    if (m_screenTechnique && queue)
        queue->GetQueueGroup(kSolidQueueGroup)->AddSolidTextureRenderable(m_screenTechnique, this);
    return 1;
}

// Trails first (drawn from the particles of the last step), then the step; then everything
// this frame bound goes back.
void eRenderGrowWind::Draw(eRenderEngine* engine, eRenderSystem* rs, eViewport* viewport)
{
    if (!viewport)
        return;
    // The host's target of this frame, which every off-screen pass returns to; the host may
    // draw into another one than it did when the frame buffer was made.
    GLint target = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &target);
    m_savedFrameBuffer = target;

    DrawScreen(engine, rs, viewport);
    UpdateParticles(engine, rs, viewport);

    GLut::BindFrameBuffer(GL_FRAMEBUFFER, (unsigned int)m_savedFrameBuffer);
    BindTexture(nullptr, 2);
    BindTexture(nullptr, 1);
    BindTexture(nullptr, 0);
    GLut::BindBuffer(GL_ARRAY_BUFFER, 0);
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glViewport(0, 0, viewport->GetActualWidth(), viewport->GetActualHeight());
    engine->GetVisitor()->EndPass();
}

void eRenderGrowWind::DrawScreen(eRenderEngine* engine, eRenderSystem* rs, eViewport* viewport)
{
    // Without the pair (a failed upload) the frame would land in the host's target.
    if (!m_backTexture || !m_screenTexture)
        return;
    BindFrameBuffer(m_backTexture);
    glViewport(0, 0, kScreenWidth, kScreenHeight);
    DrawTexture(engine, rs, viewport, m_screenTexture, kTrailFade);
    DrawParticles(engine, rs, viewport);
    BindFrameBuffer(nullptr);
    glViewport(0, 0, viewport->GetActualWidth(), viewport->GetActualHeight());
    DrawGlobe(engine, rs, viewport, m_backTexture);
    std::swap(m_screenTexture, m_backTexture);
}

void eRenderGrowWind::DrawTexture(eRenderEngine* engine, eRenderSystem*, eViewport*,
                                  eTexture* texture, float opacity)
{
    eRenderProgram* rp = ApplyPass(engine, m_screenTechnique);
    if (!rp)
        return;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    p->Uniform1i(u->m_nCustom[eR_SCREEN], 2);
    p->Uniform1f(u->m_nCustom[eR_OPACITY], opacity);
    BindTexture(texture, 2);
    unsigned int const enabled = BindVertices(m_quadVertices);
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    if (enabled)
        glDrawArrays(GL_TRIANGLES, 0, 6);
    UnbindVertices(enabled);
}

void eRenderGrowWind::DrawParticles(eRenderEngine* engine, eRenderSystem*, eViewport*)
{
    eRenderProgram* rp = ApplyPass(engine, m_drawTechnique);
    if (!rp)
        return;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    p->Uniform1i(u->m_nCustom[eR_WIND], 0);
    BindTexture(m_windTexture, 0);
    p->Uniform1i(u->m_nCustom[eR_PARTICLES], 1);
    BindTexture(m_particleTexture, 1);
    p->Uniform1i(u->m_nCustom[eR_COLOR_TABLE], 2);
    BindTexture(m_colorTexture, 2);
    p->Uniform1f(u->m_nCustom[eR_PARTICLE_RES], (float)m_particleResolution);
    p->Uniform2f(u->m_nCustom[eR_WIND_MIN], m_windData.uMin, m_windData.vMin);
    p->Uniform2f(u->m_nCustom[eR_WIND_MAX], m_windData.uMax, m_windData.vMax);
    unsigned int const enabled = BindVertices(m_particleIndices);
    if (enabled)
        glDrawArrays(GL_POINTS, 0, m_particleCount);
    UnbindVertices(enabled);
}

void eRenderGrowWind::UpdateParticles(eRenderEngine* engine, eRenderSystem*, eViewport*)
{
    // No state (no particles): nothing to advance, and nothing may land in the host's target.
    if (!m_particleBackTexture || !m_particleTexture)
        return;
    BindFrameBuffer(m_particleBackTexture);
    glViewport(0, 0, m_particleResolution, m_particleResolution);
    eRenderProgram* rp = ApplyPass(engine, m_updateTechnique);
    if (!rp)
        return;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    p->Uniform1i(u->m_nCustom[eR_WIND], 0);
    BindTexture(m_windTexture, 0);
    p->Uniform1i(u->m_nCustom[eR_PARTICLES], 1);
    BindTexture(m_particleTexture, 1);
    p->Uniform1f(u->m_nCustom[eR_RAND_SEED], (float)(Random15() / 32767.0));
    p->Uniform2f(u->m_nCustom[eR_WIND_RES], (float)m_windData.width, (float)m_windData.height);
    p->Uniform2f(u->m_nCustom[eR_WIND_MIN], m_windData.uMin, m_windData.vMin);
    p->Uniform2f(u->m_nCustom[eR_WIND_MAX], m_windData.uMax, m_windData.vMax);
    p->Uniform1f(u->m_nCustom[eR_SPEED_FACTOR], kSpeedFactor);
    p->Uniform1f(u->m_nCustom[eR_DROP_RATE], kDropRate);
    p->Uniform1f(u->m_nCustom[eR_DROP_RATE_BUMP], kDropRateBump);
    unsigned int const enabled = BindVertices(m_quadVertices);
    if (!enabled)
        return;
    glDrawArrays(GL_TRIANGLES, 0, 6);
    UnbindVertices(enabled);
    std::swap(m_particleTexture, m_particleBackTexture);
}

void eRenderGrowWind::DrawGlobe(eRenderEngine* engine, eRenderSystem* rs, eViewport* viewport,
                                eTexture* texture)
{
    eGlobeModel* model = engine->GetGlobeModel();
    eCamera* camera = engine->GetCamera();
    eCoordSys* coordSys = engine->GetCoordSys();
    std::vector<eTileSet*>* tiles = model && camera ? model->GetVisibleTileSets(camera) : nullptr;
    if (!tiles || !coordSys)
        return;
    ePass* pass = m_globeTechnique->GetPass(0);
    eRenderQueueVisitor* visitor = engine->GetVisitor();
    visitor->BeginPass(pass);
    // The trail picture covers the whole map.
    eRect2D rect = coordSys->GetBounds();
    coordSys->MapToLogicalRect(rect, rect);
    for (size_t i = 0; i < tiles->size(); ++i)
    {
        eTileSet* tile = (*tiles)[i];
        if (tile && tile->GetBounds().IsIntersect(rect))
            tile->RenderGrowth(engine, rs, camera, viewport, texture, &rect, pass, 1, nullptr, 0.0,
                               nullptr, m_maskTexture, m_opacity);
    }
    visitor->EndPass();
}

} // namespace KYR
