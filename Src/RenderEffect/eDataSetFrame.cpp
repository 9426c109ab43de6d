#include "eDataSetFrame.h"
#include "ePicture.h"
#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTexture.h"
#include <cstring>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
double const kDegToRad = 0.017453292519943295;
double const kEarthRadius = 6378137.0;
double const kEarthCircumference = 40075016.68557849;

// The inverse of the last local frame asked for. A set converts many positions against
// one frame, so the inverse is computed once and reused while the frame stays the same.
struct eInverseCache
{
    eMatrix4T<float> m_Key;
    eMatrix4T<float> m_Inverse;
};

eMatrix4T<float> const& InverseOf(eMatrix4T<float> const& m)
{
    thread_local eInverseCache cache;
    if (std::memcmp(cache.m_Key.Ptr(), m.Ptr(), sizeof(float) * 16) != 0)
    {
        cache.m_Key = m;
        cache.m_Inverse = m.Inverse();
    }
    return cache.m_Inverse;
}

eCoordSys* CoordSysOf(eCanvas* canvas)
{
    return canvas ? canvas->GetCoordSys() : nullptr;
}
} // namespace

int eDataSetFrame::SceneMode(eCamera* camera)
{
    return camera ? (int)camera->GetSceneMode() : (int)eSM_GLOBE;
}

eVector4T<double> eDataSetFrame::PositionToWorld(eCamera* camera, eCanvas* canvas,
                                                 eMatrix4T<float> const& local,
                                                 eVector4T<double> const& anchor, int kind,
                                                 eVector4T<double> const& p)
{
    int mode = SceneMode(camera);
    if (kind == 0)
    {
        eVector4T<float> v = local * eVector4T<float>(p);
        return eVector4T<double>(v.x + anchor.x, v.y + anchor.y, v.z + anchor.z, p.w);
    }
    if (kind == 1 && mode == eSM_GLOBE)
    {
        eVector3T<double> w =
            eMathEngine::SphericalToCartesian(p.x * kDegToRad, p.y * kDegToRad, p.z + kEarthRadius);
        return eVector4T<double>(w, p.w);
    }
    eCoordSys* cs = CoordSysOf(canvas);
    if (!cs)
        return eVector4T<double>(0.0, 0.0, p.z, p.w);
    ePoint2D map(p.x, p.y), logical;
    if (kind == 1)
    {
        cs->GeoToMap(ePoint2D(p.x, p.y), map);
        cs->MapToLogicalPoint(map, logical);
        return eVector4T<double>(logical.x, logical.y, p.z, p.w);
    }
    cs->MapToLogicalPoint(map, logical);
    eVector3T<double> w;
    cs->LogicalToWorld((eSceneMode)mode, logical, w, p.z);
    return eVector4T<double>(w, p.w);
}

eVector4T<float> eDataSetFrame::PositionToLocal(eCamera* camera, eCanvas* canvas,
                                                eMatrix4T<float> const& local,
                                                eVector4T<double> const& anchor, int kind,
                                                eVector4T<double> const& p)
{
    if (kind == 0)
        return eVector4T<float>(p);
    int mode = SceneMode(camera);
    // Geographic positions on the globe are the common case of every frame: converted
    // here directly, with the same arithmetic as PositionToWorld.
    eVector3T<double> w;
    if (kind == 1 && mode == eSM_GLOBE)
        w = eMathEngine::SphericalToCartesian(p.x * kDegToRad, p.y * kDegToRad, p.z + kEarthRadius);
    else
    {
        eVector4T<double> world = PositionToWorld(camera, canvas, local, anchor, kind, p);
        w = eVector3T<double>(world.x, world.y, world.z);
    }
    float x = (float)(w.x - anchor.x), y = (float)(w.y - anchor.y), z = (float)(w.z - anchor.z);
    if (mode != eSM_GLOBE)
        return eVector4T<float>(x, y, z, (float)p.w);
    float const* m = InverseOf(local).Ptr(); // column-major, point with w = 1
    return eVector4T<float>(m[0] * x + m[4] * y + m[8] * z + m[12],
                            m[1] * x + m[5] * y + m[9] * z + m[13],
                            m[2] * x + m[6] * y + m[10] * z + m[14], (float)p.w);
}

ePoint2D eDataSetFrame::PositionToGeo(eCanvas* canvas, int kind, double x, double y)
{
    if (kind == 0)
        return ePoint2D(0.0, 0.0);
    if (kind == 1)
        return ePoint2D(x, y);
    ePoint2D geo(0.0, 0.0);
    if (eCoordSys* cs = CoordSysOf(canvas))
        cs->MapToGeo(ePoint2D(x, y), geo);
    return geo;
}

eMatrix4T<float> eDataSetFrame::LocalFrame(ePoint2D const& geo)
{
    return eMatrix4T<float>::RotationY((float)(geo.x * kDegToRad)) *
           eMatrix4T<float>::RotationX((float)(-geo.y * kDegToRad));
}

eTechnique* eDataSetFrame::CreateTechnique(eString const& program, unsigned char depthTest)
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    pass->SetProgram(program);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(depthTest);
    pass->SetDepthWriteEnabled(0);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetLightingEnabled(0);
    pass->SetLineWidth(2.0f);
    return technique;
}

void eDataSetFrame::SetClockUniforms(eRenderEngine* engine, eRenderProgram* program, float curTime,
                                     float startTime, float endTime, float traceTime)
{
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    double resolution = engine->GetRenderResolution(1);
    p->Uniform1f(u->m_nCustom[eR_RESERVED], 0.0f);
    p->Uniform1f(u->m_nLightingEnabled, 0.0f);
    p->Uniform1f(u->m_nCustom[eR_EARTH_PIXELS], (float)(kEarthCircumference / resolution));
    p->Uniform1f(u->m_nCustom[eR_CUR_TIME], curTime);
    p->Uniform1f(u->m_nCustom[eR_START_TIME], startTime);
    p->Uniform1f(u->m_nCustom[eR_END_TIME], endTime);
    p->Uniform1f(u->m_nCustom[eR_TRACE_TIME], traceTime);
}

void eDataSetFrame::SetAnchorMatrix(eCamera* camera, eRenderProgram* program,
                                    eVector4T<double> const& anchor, eMatrix4T<float> const& local)
{
    eVector3T<double> c = camera ? camera->GetReferenceCenter() : eVector3T<double>();
    eMatrix4T<float> world =
        eMatrix4T<float>::Translation((float)(anchor.x - c.x), (float)(anchor.y - c.y),
                                      (float)(anchor.z - c.z)) *
        local;
    program->GetProgram()->UniformMatrix4(program->GetUniform()->m_nWorldMatrix, 1, 0, world.Ptr());
}

unsigned char eDataSetFrame::BindVertexData(eVertexData* data, int nextOffset)
{
    eHardwareVertexBuffer* buffer = data ? data->GetHardwareBuffer() : nullptr;
    if (!buffer || !buffer->GetBufferID())
        return 0;
    int stride = data->GetVertexStride();
    GLut::BindBuffer(GL_ARRAY_BUFFER, buffer->GetBufferID());
    for (eVertexElement const& e : data->GetVertexElements())
    {
        GLut::VertexAttribPointer(e.m_eIndex, e.m_nCount, e.m_eType, e.m_bNormalized, stride,
                                  reinterpret_cast<void const*>((size_t)e.m_nOffset));
        GLut::EnableVertexAttribArray(e.m_eIndex);
        if (e.m_eIndex == eAI_POSITION && nextOffset > 0)
        {
            size_t ahead = (size_t)e.m_nOffset + (size_t)nextOffset * (size_t)stride;
            GLut::VertexAttribPointer(eAI_ATTRIB1, e.m_nCount, e.m_eType, e.m_bNormalized, stride,
                                      reinterpret_cast<void const*>(ahead));
            GLut::EnableVertexAttribArray(eAI_ATTRIB1);
        }
    }
    return 1;
}

void eDataSetFrame::UnbindVertexData(eVertexData* data, int nextOffset)
{
    if (!data)
        return;
    for (eVertexElement const& e : data->GetVertexElements())
        GLut::DisableVertexAttribArray(e.m_eIndex);
    if (nextOffset > 0)
        GLut::DisableVertexAttribArray(eAI_ATTRIB1);
    GLut::BindBuffer(GL_ARRAY_BUFFER, 0);
}

eTexture* eDataSetFrame::LoadTexture(eString const& path)
{
    eImageData* image = ePicture::Load(path, 32);
    if (!image)
        return nullptr;
    eTexture* texture = eTextureManager::GetSingleton().CreateTexture();
    texture->SetAutoRelease(0);
    texture->SetTextureWrapS(eTWM_CLAMP_TO_EDGE);
    texture->SetTextureWrapT(eTWM_CLAMP_TO_EDGE);
    texture->SetTextureMinFilter(eTFM_LINEAR);
    texture->SetTextureMagFilter(eTFM_LINEAR);
    texture->SetImageData(image);
    texture->CreateTexture();
    // The pixels are gone after this; the texture must not look at them again.
    texture->SetImageData(nullptr);
    delete image;
    return texture;
}

} // namespace KYR
