#include "eRenderTyphoonAnimation.h"
#include "GLut.h"
#include "WindSpeedLevel.h"
#include "eCamera.h"
#include "eFile.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMatrix4.h"
#include "eMesh.h"
#include "ePicture.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderQueueVisitor.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <cmath>
#include <cstring>
#include <epoxy/gl.h>
#include <limits>
#include <memory>

namespace KYR
{

namespace
{

// A picture every object of the class draws with. A load asked for in the constructor or a
// setter waits for the next Initialize or Render, where a context is sure to be current.
struct SharedPicture
{
    eString path;
    unsigned int texture = 0;
    bool pending = false;
};

struct TyphoonPictures
{
    SharedPicture text;
    SharedPicture symbol;
};

TyphoonPictures& Pictures()
{
    static TyphoonPictures s_pictures;
    return s_pictures;
}

// The level sits in the fourth component where the text pictures keep theirs; the symbol's
// picture is chosen by the pass, not by this value.
float const kSymbolLevelSlot = 96.0f;
// Wind values above this can only be speeds in metres per second, never levels.
float const kLargestLevel = 22.0f;
double const kOutsideTrack = -1.0;

eTechnique* TimePointTechnique()
{
    static eShared<eTechnique> s_technique;
    if (!s_technique)
    {
        s_technique.Reset(new eTechnique());
        ePass* pass = s_technique->CreatePass();
        pass->SetProgram("TimePoint");
        pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
        pass->SetDepthCheckEnabled(0);
        pass->SetDepthWriteEnabled(0);
    }
    return s_technique;
}

ePass* SpherePointPass()
{
    static eShared<ePass> s_pass;
    if (!s_pass)
    {
        s_pass.Reset(new ePass());
        s_pass->SetProgram("ParallelSpherePoint");
        s_pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
        s_pass->SetDepthCheckEnabled(0);
        s_pass->SetDepthWriteEnabled(0);
    }
    return s_pass;
}

// Nothing happens while the texture stands for the same file; otherwise the path is kept
// and the file read at the next upload.
void RequestPicture(SharedPicture& picture, eString const& path)
{
    if (picture.texture && picture.path == path)
        return;
    picture.path = path;
    picture.pending = true;
}

// Reads and uploads a waiting picture on unit 0. A file that cannot be read or decoded
// leaves the old texture standing, or none.
void UploadPicture(SharedPicture& picture)
{
    if (!picture.pending)
        return;
    picture.pending = false;
    std::unique_ptr<eImageData> image(ePicture::Load(picture.path, 32));
    if (!image)
        return;
    GLint active = 0, bound = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    GLut::ActiveTexture(GL_TEXTURE0);
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    if (!picture.texture)
    {
        glGenTextures(1, &picture.texture);
        glBindTexture(GL_TEXTURE_2D, picture.texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    }
    else
        glBindTexture(GL_TEXTURE_2D, picture.texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image->m_nWidth, image->m_nHeight, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, image->m_pData);
    glBindTexture(GL_TEXTURE_2D, (GLuint)bound);
    GLut::ActiveTexture((unsigned int)active);
}

void UploadPendingPictures()
{
    UploadPicture(Pictures().symbol);
    UploadPicture(Pictures().text);
}

void DeletePicture(SharedPicture& picture)
{
    if (picture.texture)
        glDeleteTextures(1, &picture.texture);
    picture.texture = 0;
}

// y truncated to a level; values no int can hold (and NaN) give no meaningful level.
int TruncatedLevel(double y)
{
    if (!(y > (double)std::numeric_limits<int>::min() - 1.0 &&
          y < (double)std::numeric_limits<int>::max() + 1.0))
        return 0;
    return (int)y;
}

// A store of one float element at the position attribute, emptied for new vertices.
eVertexData* MakeStore(eVertexElementCount components)
{
    eVertexData* store = new eVertexData();
    store->AddElement(eVET_FLOAT, components, eAI_POSITION, 0);
    return store;
}

// Uploads the store and drops its processor-side copy; the count stays known.
void Upload(eVertexData* store)
{
    store->Create();
    std::vector<unsigned char>().swap(store->GetVertexBuffer());
}

} // namespace

eRenderTyphoonAnimation::eRenderTyphoonAnimation()
    : m_isConvertWind(0), m_initialized(false), m_textColNum(32), m_rotateAngle(0.0),
      m_rotateAngleDelta(0.017453292519943295), m_currentTime(0.0), m_textSize(5000.0),
      m_symbolSizeScale(50000.0),
      m_symbolPicturePath(eSystem::GetWorkPath() + "Resources/Icons/TyphoonPoint.png"),
      m_textPicturePath(eSystem::GetWorkPath() + "Resources/Icons/TyphoonText.png")
{
    RequestPicture(Pictures().symbol, m_symbolPicturePath);
    RequestPicture(Pictures().text, m_textPicturePath);
}

eRenderTyphoonAnimation::~eRenderTyphoonAnimation() {}

void eRenderTyphoonAnimation::UpDateTyphoonPath(std::vector<eVector4T<double>> track)
{
    m_track.swap(track);
    m_initialized = false;
}

void eRenderTyphoonAnimation::SetSymbolPicturePath(eString path)
{
    if (path == m_symbolPicturePath)
        return;
    m_symbolPicturePath = path;
    RequestPicture(Pictures().symbol, path);
}

void eRenderTyphoonAnimation::SetTextPicturePath(eString path)
{
    if (path == m_textPicturePath)
        return;
    m_textPicturePath = path;
    RequestPicture(Pictures().text, path);
}

// ----- life cycle -----------------------------------------------------------------------

unsigned char eRenderTyphoonAnimation::Initialize(eRenderEngine*)
{
    if (m_initialized)
        return 1;
    UploadPendingPictures();
    CreateBuffer();
    if (!m_symbolVertices)
    {
        // One vertex, rewritten in place every frame; its first content is never drawn.
        eVertexData* symbol = MakeStore(eVEC_4);
        symbol->SetVertexType(1);
        unsigned char ones[4 * sizeof(float)];
        std::memset(ones, 0xFF, sizeof ones);
        symbol->AddVertex(ones, 1);
        Upload(symbol);
        if (eHardwareVertexBuffer* buffer = symbol->GetHardwareBuffer())
            buffer->SetVertexStride(symbol->GetVertexStride());
        m_symbolVertices.Reset(symbol);
    }
    m_initialized = true;
    return 1;
}

// The object stays marked initialised: it draws nothing until a new track is given. The
// shared pictures are asked for again only by a new path or a newly made object.
unsigned char eRenderTyphoonAnimation::UnInitialize(eRenderEngine*)
{
    DeleteBuffer();
    DeletePicture(Pictures().text);
    DeletePicture(Pictures().symbol);
    return 1;
}

void eRenderTyphoonAnimation::CreateBuffer()
{
    CreateTyphoonPath();
    CreateTyphoonText();
}

void eRenderTyphoonAnimation::DeleteBuffer()
{
    m_pathVertices.Reset();
    m_textVertices.Reset();
    m_symbolVertices.Reset();
}

void eRenderTyphoonAnimation::CreateTyphoonPath()
{
    if (!m_pathVertices)
    {
        m_pathVertices.Reset(MakeStore(eVEC_3));
        m_pathVertices->SetVertexType(1);
    }
    else
        m_pathVertices->Delete();
    m_pathVertices->SetVertexSize(0); // the last upload's count must not offset new vertices
    std::vector<float> vertices;
    vertices.reserve(m_track.size() * 3);
    for (eVector4T<double> const& p : m_track)
    {
        vertices.push_back((float)p.z);
        vertices.push_back((float)p.w);
        vertices.push_back((float)p.x);
        if ((float)p.y > kLargestLevel)
            m_isConvertWind = 1;
    }
    if (!m_track.empty())
        m_pathVertices->AddVertex(vertices.data(), (int)m_track.size());
    Upload(m_pathVertices);
}

void eRenderTyphoonAnimation::CreateTyphoonText()
{
    if (!m_textVertices)
        m_textVertices.Reset(MakeStore(eVEC_4));
    else
        m_textVertices->Delete();
    m_textVertices->SetVertexSize(0);
    std::vector<float> vertices;
    int last = -1000;
    for (eVector4T<double> const& p : m_track)
    {
        int level = m_isConvertWind ? WindSpeedLevel(p.y) : TruncatedLevel(p.y);
        if (level == last)
            continue;
        last = level;
        float const v[4] = {(float)p.z, (float)p.w, (float)p.x, (float)level};
        vertices.insert(vertices.end(), v, v + 4);
    }
    if (!vertices.empty())
        m_textVertices->AddVertex(vertices.data(), (int)(vertices.size() / 4));
    Upload(m_textVertices);
}

// ----- the symbol's place ------------------------------------------------------------------

eVector4T<double> eRenderTyphoonAnimation::GetSymbolMessage(double time)
{
    eVector4T<double> const outside(kOutsideTrack, 0.0, 0.0, 0.0);
    size_t const n = m_track.size();
    if (n == 0)
        return outside;
    if (n == 1)
        return m_track[0];
    if (time < m_track[0].x || time > m_track[n - 1].x)
        return outside;
    size_t const mid = (size_t)std::floor(n * 0.5);
    if (m_track[mid].x == time)
        return m_track[mid];

    // The first point later than the time before the middle, or the first at or after it
    // from the middle on. Only a time that compares with nothing (NaN) finds neither; it
    // falls back to the first point.
    size_t next = n;
    if (m_track[mid].x > time)
    {
        for (size_t i = 0; i <= mid && next == n; ++i)
            if (m_track[i].x > time)
                next = i;
    }
    else
    {
        for (size_t i = mid; i < n && next == n; ++i)
            if (m_track[i].x >= time)
                next = i;
    }
    size_t const prevIndex = next == n || next == 0 ? 0 : next - 1;
    eVector4T<double> const& prev = m_track[prevIndex];
    eVector4T<double> const& after = m_track[next == n ? 0 : next];
    if (prev.x == after.x)
        return prev;

    double const a = (time - prev.x) / (after.x - prev.x);
    double const b = 1.0 - a;
    eVector4T<double> message(b * prev.x + a * after.x, 0.0, b * prev.z + a * after.z,
                              b * prev.w + a * after.w);
    // The wind value holds until the next point is reached.
    message.y = b * prev.y + a * after.y == after.y ? after.y : prev.y;
    if (m_isConvertWind)
        message.y = WindSpeedLevel(message.y);
    return message;
}

void eRenderTyphoonAnimation::UpdateSymbol(eVector4T<double> message)
{
    if (!m_symbolVertices)
        return;
    eHardwareVertexBuffer* buffer = m_symbolVertices->GetHardwareBuffer();
    if (!buffer)
        return;
    float const v[4] = {(float)message.z, (float)message.w, (float)message.x, kSymbolLevelSlot};
    buffer->WriteData(0, (int)sizeof v, v);
}

// ----- frame ------------------------------------------------------------------------------

unsigned char eRenderTyphoonAnimation::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                         eRenderQueue* queue)
{
    if (queue)
        if (eRenderQueueGroup* group = queue->GetQueueGroup(7))
            group->AddTransparentRenderable(TimePointTechnique(), this);
    return 0;
}

unsigned char eRenderTyphoonAnimation::Render(eRenderEngine* engine, eRenderSystem* rs,
                                              eCamera* camera, eViewport*)
{
    if (!IsVisible())
        return 0;
    if (!m_initialized)
        Initialize(engine);
    if (!engine || !camera)
        return 0;
    UploadPendingPictures();
    RenderPath(engine, rs, camera);
    RenderTextPicture(engine, rs, camera);
    return 0;
}

namespace
{

// Camera-relative world matrix, view and projection, as every program of the effect takes
// them: vertices are placed in world coordinates by the program, then moved by the
// negated reference centre.
void SetMatrices(eProgram* p, eShaderUniform* u, eCamera* camera)
{
    eVector3T<double> const& c = camera->GetReferenceCenter();
    eMatrix4T<float> world = eMatrix4T<float>::Translation((float)-c.x, (float)-c.y, (float)-c.z) *
                             camera->GetRelativeWorldMatrix();
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
    p->UniformMatrix4(u->m_nViewMatrix, 1, 0, camera->GetRelativeViewMatrix().Ptr());
    p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0, camera->GetRelativeProjectionMatrix().Ptr());
}

} // namespace

void eRenderTyphoonAnimation::RenderPath(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera)
{
    eRenderProgram* rp = engine->GetRenderProgram(eString("TimePoint"));
    eProgram* p = rp ? rp->GetProgram() : nullptr;
    if (p)
    {
        eShaderUniform* u = rp->GetUniform();
        p->Use();
        SetMatrices(p, u, camera);
        p->Uniform1f(u->m_nCustom[eTPR_TIME_START], 0.0f);
        p->Uniform1f(u->m_nCustom[eTPR_CURRENT_TIME], (float)m_currentTime);
    }
    glEnable(GL_LINE_SMOOTH);
    glLineWidth(2.0f);
    if (m_pathVertices && rs)
        rs->DrawVertices(eOT_LINE_STRIP, m_pathVertices, 0, m_pathVertices->GetVertexSize(), false);
    glDisable(GL_LINE_SMOOTH);
}

void eRenderTyphoonAnimation::RenderTextPicture(eRenderEngine* engine, eRenderSystem* rs,
                                                eCamera* camera)
{
    if (eRenderQueueVisitor* visitor = engine->GetVisitor())
        visitor->BeginPass(SpherePointPass());
    eRenderProgram* rp = engine->GetRenderProgram(eString("ParallelSpherePoint"));
    eProgram* p = rp ? rp->GetProgram() : nullptr;
    eShaderUniform* u = rp ? rp->GetUniform() : nullptr;
    if (p)
    {
        p->Use();
        SetMatrices(p, u, camera);
        p->Uniform1f(u->m_nCustom[eSPR_TIME_START], 0.0f);
        p->Uniform1f(u->m_nCustom[eSPR_CURRENT_TIME], (float)m_currentTime);
        p->Uniform1f(u->m_nCustom[eSPR_PICTURE_MODE], 0.0f);
        p->Uniform1f(u->m_nCustom[eSPR_SIZE_MODE], 0.0f);
    }
    m_rotateAngle += m_rotateAngleDelta;
    if (p)
        p->Uniform1f(u->m_nCustom[eSPR_ROTATE_ANGLE], (float)m_rotateAngle);

    // The symbol: its size follows the wind level, so a time outside the track gives 0.
    GLut::ActiveTexture(GL_TEXTURE0);
    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, Pictures().symbol.texture);
    eVector4T<double> message = GetSymbolMessage(m_currentTime);
    UpdateSymbol(message);
    if (p)
        p->Uniform1f(u->m_nCustom[eSPR_POINT_SIZE], (float)(message.y * m_symbolSizeScale));
    if (m_symbolVertices && rs)
        rs->DrawVertices(eOT_POINT_LIST, m_symbolVertices, 0, 1, false);

    // The level pictures, addressed in the text picture by their level.
    if (p)
    {
        p->Uniform1f(u->m_nCustom[eSPR_SIZE_MODE], 1.0f);
        p->Uniform1f(u->m_nCustom[eSPR_POINT_SIZE], (float)m_textSize);
        p->Uniform1f(u->m_nCustom[eSPR_TEXT_COLUMNS], (float)m_textColNum);
        p->Uniform1f(u->m_nCustom[eSPR_PICTURE_MODE], 1.0f);
    }
    glBindTexture(GL_TEXTURE_2D, Pictures().text.texture);
    if (m_textVertices && rs)
        rs->DrawVertices(eOT_POINT_LIST, m_textVertices, 0, m_textVertices->GetVertexSize(), false);
}

} // namespace KYR
