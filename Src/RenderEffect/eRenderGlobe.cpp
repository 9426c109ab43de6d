#include "eRenderGlobe.h"
#include "ePicture.h"
#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderQueueVisitor.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <cmath>
#include <epoxy/gl.h>
#include <vector>

namespace KYR
{

namespace
{
void DeleteTexture(unsigned int name)
{
    glDeleteTextures(1, &name);
}
void DeleteFrameBuffer(unsigned int name)
{
    GLut::DeleteFrameBuffers(1, &name);
}
} // namespace

eRenderGlobe::eRenderGlobe()
    : m_fLightBrightNess(4.0f), m_fLightSpotSize(0.75f), m_fLightFactor(1.0f),
      m_strEarthMapPicture(eSystem::GetWorkPath() + "Resources/Icons/WGS84-Globe.jpg"),
      m_strEarthElevationPicture(eSystem::GetWorkPath() + "Resources/Icons/elev_bump_4k.jpg"),
      m_arAmbientColor{1.0f, 1.0f, 1.0f}, m_arAmbientSHLightColor{1.0f, 1.0f, 1.0f},
      m_arSpotLightColor{1.0f, 1.0f, 1.0f}, m_arAmbientSHLightCoefficients{0.0f, 0.0f, 0.0f},
      m_arLightColor{1.0f, 1.0f, 1.0f}, m_arSunDirection{0.0f, 0.0f, 0.0f}, m_arSHFirstOrder{},
      m_nLatitudeCount(73), m_nLongitudeCount(145), m_nWidth(800), m_nHeight(600),
      m_bInitialized(0), m_bUseTexture(0), m_bUseShadow(0), m_dHeightBase(5000000.0),
      m_dHeightScale(1000.0), m_vSunPosition(0.0, 0.0, 0.0), m_vDiffuseColor(0.0f, 0.0f, 0.0f),
      m_pTechnique(new eTechnique())
{
    ePass* pass = m_pTechnique->CreatePass();
    pass->SetProgram("Globe");
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(1);
}

eRenderGlobe::~eRenderGlobe()
{
    Release();
}

void eRenderGlobe::SetAmbientSHLightCoefficients(eVector3T<float> const& c)
{
    Store(m_arAmbientSHLightCoefficients, c);
    for (eVector3T<double>& k : m_arSHCoefficients)
        k = eVector3T<double>(c);
}

unsigned char eRenderGlobe::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return 1;
    InitializeSpherical();
    unsigned int name = 0;
    GLut::GenFrameBuffers(1, &name);
    m_nFrameBuffer.Reset(name, DeleteFrameBuffer);
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, m_nFrameBuffer);
    GLut::ActiveTexture(GL_TEXTURE2);
    name = 0;
    glGenTextures(1, &name);
    m_nDepthTexture.Reset(name, DeleteTexture);
    glBindTexture(GL_TEXTURE_2D, m_nDepthTexture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, m_nWidth, m_nHeight, 0, GL_DEPTH_COMPONENT,
                 GL_FLOAT, nullptr);
    GLut::FrameBufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, m_nDepthTexture,
                               0);
    GLut::CheckFrameBufferStatus(GL_FRAMEBUFFER); // an incomplete buffer is not noticed
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, 0);
    GLut::ActiveTexture(GL_TEXTURE1);
    m_nElevationTexture.Reset(CreateTextrue(m_strEarthElevationPicture), DeleteTexture);
    GLut::ActiveTexture(GL_TEXTURE0);
    m_nEarthMapTexture.Reset(CreateTextrue(m_strEarthMapPicture), DeleteTexture);
    m_bInitialized = 1;
    return 1;
}

unsigned char eRenderGlobe::UnInitialize(eRenderEngine*)
{
    Release();
    return 1;
}

// Lets go in a fixed order; each thing is freed by its last holder, so a copy that still
// draws keeps what it shares. The depth texture keeps reading its number after its release,
// and that stale number is never deleted again (not by a second UnInitialize, nor by the
// destructor).
void eRenderGlobe::Release()
{
    m_nSpareTexture.Reset();
    m_pVertexData.Reset(); // deleting a store deletes its hardware buffer
    m_pIndexData.Reset();
    m_nEarthMapTexture.Reset();
    m_nElevationTexture.Reset();
    m_nDepthTexture.ResetKeepingNumber();
    m_nFrameBuffer.Reset();
    m_pTechnique.Reset();
    m_bInitialized = 0;
}

void eRenderGlobe::InitializeSpherical()
{
    eImageData* image = ePicture::Load(m_strEarthElevationPicture, 32);
    if (image && !image->m_pData)
    {
        delete image;
        image = nullptr;
    }
    int const rows = m_nLatitudeCount, cols = m_nLongitudeCount;
    m_pVertexData.Reset(new eVertexData());
    m_pVertexData->SetVertexType(1);
    m_pVertexData->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    m_pVertexData->SetVertexSize(rows * cols);
    size_t const bytes = image ? (size_t)image->m_nPitch * image->m_nHeight : 0;
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j)
        {
            float qLat = (float)i * 180.0f / (float)(rows - 1);
            float qLon = (float)j * 360.0f / (float)(cols - 1);
            float lat = (float)((double)qLat - 90.0);
            float lon = (float)((double)qLon - 180.0);
            float step = 0.0f;
            if (image)
            {
                int x = (int)((lon + 180.0) * 0.0027777777777778 * (image->m_nWidth - 1));
                int y = (int)((1.0 - (lat + 90.0) * 0.0055555555555556) * (image->m_nHeight - 1));
                // First channel at a fixed stride of three bytes, whatever the depth.
                size_t at = ((size_t)y * image->m_nWidth + x) * 3;
                if (x >= 0 && y >= 0 && at < bytes)
                    step = image->m_pData[at];
            }
            if (std::fabs(lat) > 88.0)
                step = 0.0f; // flat polar caps
            float* v = reinterpret_cast<float*>(m_pVertexData->GetVertex(i * cols + j));
            v[0] = lon;
            v[1] = lat;
            v[2] = step;
        }
    m_pIndexData.Reset(new eIndexData());
    std::vector<unsigned short>& idx = m_pIndexData->GetIndexBuffer();
    idx.resize((size_t)6 * (cols - 1) * (rows - 1));
    for (int i = 0; i < rows - 1; ++i)
        for (int j = 0; j < cols - 1; ++j)
        {
            int n = (j + 1) % cols;
            unsigned short* o = &idx[((size_t)(cols - 1) * i + j) * 6];
            o[0] = (unsigned short)(cols * i + j);
            o[1] = (unsigned short)(cols * (i + 1) + j);
            o[2] = (unsigned short)(cols * i + n);
            o[3] = (unsigned short)(cols * i + n);
            o[4] = (unsigned short)(cols * (i + 1) + j);
            o[5] = (unsigned short)(cols * (i + 1) + n);
        }
    m_pVertexData->Create();
    m_pIndexData->Create();
    std::vector<unsigned char>().swap(m_pVertexData->GetVertexBuffer());
    std::vector<unsigned short>().swap(idx);
    delete image;
}

unsigned int eRenderGlobe::CreateTextrue(eString path)
{
    eImageData* image = ePicture::Load(path, 32);
    if (!image)
        return 0;
    if (!image->m_pData)
    {
        delete image;
        return 0;
    }
    glEnable(GL_TEXTURE_2D);
    unsigned int id = 0;
    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_2D, id);
    ePicture::UploadClampedLinear(image);
    delete image;
    return id;
}

void eRenderGlobe::CompulateSunMatrix(eViewport* viewport, eVector3T<double> sun, double radius)
{
    eVector3T<double> s = eMathEngine::CartesianToSpherical(sun.x, sun.y, sun.z);
    double d = std::sqrt(sun.x * sun.x + sun.y * sun.y + sun.z * sun.z);
    m_matSunView = eMatrix4T<float>::Translation(0.0f, 0.0f, (float)-d) *
                   eMatrix4T<float>::RotationX((float)s.y) *
                   eMatrix4T<float>::RotationY((float)-s.x);
    double aspect = (double)viewport->GetActualWidth() / (double)viewport->GetActualHeight();
    double angle = 2.0 * std::asin(radius / d);
    double nearZ = d - radius, farZ = d + radius;
    double f = 1.0 / std::tan(angle / 2.0);
    eMatrix4T<float> p;
    for (float& e : p.m)
        e = 0.0f;
    p.m[0] = (float)(f / aspect);
    p.m[5] = (float)f;
    p.m[10] = (float)((farZ + nearZ) / (nearZ - farZ));
    p.m[11] = -1.0f;
    p.m[14] = (float)(2.0 * nearZ * farZ / (nearZ - farZ));
    m_matSunProjection = p;
    m_matSunSpace = m_matSunProjection * m_matSunView * m_matSunWorld;
}

unsigned char eRenderGlobe::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                   eViewport* viewport)
{
    if (!IsVisible())
        return 0;
    if (!m_bInitialized)
        Initialize(engine);
    // The globe draws alike in every scene mode and projection.
    (void)camera->GetSceneMode();
    if (eCoordSys* cs = camera->GetCoordSys())
        if (eProjection* prj = cs->GetPrjCoordSys().GetProjection())
            (void)prj->GetProjectionType();

    eVector3T<double> sun = engine->GetSunPosition();
    int width = viewport->GetActualWidth(), height = viewport->GetActualHeight();
    if (width != m_nWidth || height != m_nHeight || sun != m_vSunPosition)
    {
        m_nWidth = width;
        m_nHeight = height;
        m_vSunPosition = sun;
        CompulateSunMatrix(viewport, sun, m_dHeightScale * 255.0 + m_dHeightBase + 6378137.0);
    }
    eRenderProgram* rp = engine->GetRenderProgram(eString("Globe"));
    eProgram* p = rp ? rp->GetProgram() : nullptr;
    eShaderUniform* u = rp ? rp->GetUniform() : nullptr;
    if (p)
        p->Use();
    eVector3T<double> const& ref = camera->GetReferenceCenter();
    eMatrix4T<float> cameraMatrices[3] = {
        eMatrix4T<float>::Translation((float)-ref.x, (float)-ref.y, (float)-ref.z) *
            camera->GetRelativeWorldMatrix(),
        camera->GetRelativeViewMatrix(), camera->GetRelativeProjectionMatrix()};
    glEnable(GL_TEXTURE_2D);
    SendSharedUniforms(p, u, camera, engine);

    // Depth pass from the sun into the globe's own frame buffer.
    GLint saved = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &saved);
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, m_nFrameBuffer);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_CULL_FACE);
    glFrontFace(GL_CCW);
    glEnable(GL_DEPTH_TEST);
    glDepthMask(1);
    glColorMask(0, 0, 0, 0);
    GLut::ActiveTexture(GL_TEXTURE2);
    glBindTexture(GL_TEXTURE_2D, m_nDepthTexture);
    glViewport(0, 0, m_nWidth, m_nHeight);
    eMatrix4T<float> sunMatrices[3] = {m_matSunWorld, m_matSunView, m_matSunProjection};
    SendPassUniforms(p, u, 0.0f, 0.0f, 0.0f, sunMatrices, false);
    DrawMesh(rs);

    glBindTexture(GL_TEXTURE_2D, 0);
    GLut::ActiveTexture(GL_TEXTURE0);
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, (unsigned int)saved);
    glColorMask(1, 1, 1, 1);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);

    // Main pass from the camera; the shadow unit stays empty.
    SendPassUniforms(p, u, (float)m_bUseTexture, (float)m_bUseShadow, 1.0f, cameraMatrices, true);
    DrawMesh(rs);

    GLut::ActiveTexture(GL_TEXTURE0);
    if (eRenderQueueVisitor* visitor = engine->GetVisitor())
        visitor->EndPass();
    return 1;
}

void eRenderGlobe::SendSharedUniforms(eProgram* p, eShaderUniform* u, eCamera* camera,
                                      eRenderEngine* engine)
{
    GLut::ActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, m_nElevationTexture);
    if (p)
        p->Uniform1i(u->m_nCustom[0], 1);
    GLut::ActiveTexture(GL_TEXTURE2);
    glBindTexture(GL_TEXTURE_2D, m_nDepthTexture);
    if (p)
    {
        p->Uniform1i(u->m_nCustom[1], 2);
        p->Uniform2i(u->m_nCustom[2], m_nWidth, m_nHeight);
        p->UniformMatrix4(u->m_nCustom[3], 1, 0, m_matSunSpace.Ptr());
        p->Uniform1f(u->m_nCustom[4], (float)m_dHeightBase);
        p->Uniform1f(u->m_nCustom[5], (float)m_dHeightScale);
    }
    GLut::ActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, m_nEarthMapTexture);
    if (!p)
        return;
    p->Uniform1i(u->m_nCustom[6], 0);
    eVector3T<double> const& eye = camera->GetCameraPosition();
    eVector3T<double> const& sun = engine->GetSunPosition();
    p->Uniform3f(u->m_nCustom[7], (float)eye.x, (float)eye.y, (float)eye.z);
    p->Uniform3f(u->m_nCustom[8], (float)sun.x, (float)sun.y, (float)sun.z);
    p->Uniform1f(u->m_nCustom[9], -m_fLightBrightNess);
    p->Uniform1f(u->m_nCustom[10], m_fLightSpotSize);
    p->Uniform1f(u->m_nCustom[11], m_fLightFactor);
    p->UniformArray3(u->m_nCustom[12], 1, m_arAmbientColor);
    p->UniformArray3(u->m_nCustom[13], 1, m_arAmbientSHLightColor);
    p->UniformArray3(u->m_nCustom[14], 1, m_arLightColor);
    m_arSunDirection[0] = (float)-sun.x;
    m_arSunDirection[1] = (float)-sun.y;
    m_arSunDirection[2] = (float)-sun.z;
    p->UniformArray3(u->m_nCustom[15], 1, m_arSunDirection);
    p->UniformArray3(u->m_nCustom[16], 1, m_arSpotLightColor);
    // The double arrays go over as they lie in memory, read as floats.
    p->UniformArray3(u->m_nCustom[17], 9, reinterpret_cast<float const*>(m_arSHCoefficients));
    p->UniformArray2(u->m_nCustom[18], 6, reinterpret_cast<float const*>(m_arSHFirstOrder));
    p->Uniform1f(u->m_nCustom[19], 0.0f);
    p->Uniform4f(u->m_nColor, m_vDiffuseColor.x, m_vDiffuseColor.y, m_vDiffuseColor.z, 1.0f);
}

// Flags and the world, view and projection matrices of one pass. The depth pass sets its pass
// flag after the matrices, the main pass before them.
void eRenderGlobe::SendPassUniforms(eProgram* p, eShaderUniform* u, float texture, float shadow,
                                    float pass, eMatrix4T<float> const* matrices, bool passFirst)
{
    if (!p)
        return;
    p->Uniform1f(u->m_nTextureEnabled, texture);
    p->Uniform1f(u->m_nCustom[20], shadow);
    if (passFirst)
        p->Uniform1f(u->m_nCustom[21], pass);
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, matrices[0].Ptr());
    p->UniformMatrix4(u->m_nViewMatrix, 1, 0, matrices[1].Ptr());
    p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0, matrices[2].Ptr());
    if (!passFirst)
        p->Uniform1f(u->m_nCustom[21], pass);
}

void eRenderGlobe::DrawMesh(eRenderSystem* rs)
{
    if (m_pVertexData && m_pIndexData)
        rs->DrawIndexed(eOT_TRIANGLE_LIST, m_pVertexData, m_pIndexData, false);
}

unsigned char eRenderGlobe::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                              eRenderQueue* queue)
{
    queue->GetQueueGroup(3)->AddTransparentRenderable(m_pTechnique, this);
    return 1;
}

double eRenderGlobe::GetSquaredViewDepth(eCamera*)
{
    return 1.0;
}

unsigned char eRenderGlobe::Query(eRenderEngine*, eCamera*, eQueryFilter*, double&)
{
    return 1;
}

unsigned char eRenderGlobe::Refresh(eRenderEngine*, eCamera*)
{
    return 1;
}

} // namespace KYR
