// The Earth as one latitude-longitude mesh lifted by an elevation picture, lit by the sun.
// Each frame draws it twice: from the sun into a depth-only frame buffer, then from the
// camera with the Earth map.
#pragma once
#include "eFile.h"
#include "eMatrix4.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"
#include "eVector3.h"

namespace KYR
{

class eVertexData;
class eIndexData;
class eTechnique;
class eProgram;
struct eShaderUniform;

class eRenderGlobe : public eRenderable
{
public:
    eRenderGlobe();
    // Member-wise: a copy shares GL names, stores and technique with its source; the last
    // holder of each frees it, so copies may go in any order.
    eRenderGlobe(eRenderGlobe const&) = default;
    eRenderGlobe& operator=(eRenderGlobe const&) = default;
    ~eRenderGlobe() override;

    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char Refresh(eRenderEngine*, eCamera*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override;
    double GetSquaredViewDepth(eCamera*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    void SetLightBrightNess(float f) { m_fLightBrightNess = f; }
    float GetLightBrightNess() const { return m_fLightBrightNess; }
    void SetLightSpotSize(float f) { m_fLightSpotSize = f; }
    float GetLightSpotSize() const { return m_fLightSpotSize; }
    void SetEarthMapPicture(eString const& path) { m_strEarthMapPicture = path; }
    eString GetEarthMapPicture() const { return m_strEarthMapPicture; }
    void SetEarthElevationPicture(eString const& path) { m_strEarthElevationPicture = path; }
    eString GetEarthElevationPicture() const { return m_strEarthElevationPicture; }
    void SetAmbientColor(eVector3T<float> const& c) { Store(m_arAmbientColor, c); }
    eVector3T<float> GetAmbientColor() const { return Load(m_arAmbientColor); }
    void SetAmbientSHLightColor(eVector3T<float> const& c) { Store(m_arAmbientSHLightColor, c); }
    eVector3T<float> GetAmbientSHLightColor() const { return Load(m_arAmbientSHLightColor); }
    void SetSpotLightColor(eVector3T<float> const& c) { Store(m_arSpotLightColor, c); }
    eVector3T<float> GetLightSpotColor() const { return Load(m_arSpotLightColor); }
    // Stores the triple and repeats it, widened, in all nine SH coefficients.
    void SetAmbientSHLightCoefficients(eVector3T<float> const& c);
    eVector3T<float> GetAmbientSHLightCoefficients() const
    {
        return Load(m_arAmbientSHLightCoefficients);
    }
    void SetUseTexture(unsigned char b) { m_bUseTexture = b; }
    unsigned char GetUseTexture() const { return m_bUseTexture; }
    void SetUseShadow(unsigned char b) { m_bUseShadow = b; }
    unsigned char GetUseShadow() const { return m_bUseShadow; }
    void SetDiffuseColor(eVector3T<float> const& c) { m_vDiffuseColor = c; }
    eVector3T<float> GetDiffuseColor() const { return m_vDiffuseColor; }

protected:
    // Builds and uploads the 73 x 145 vertex mesh and its 16-bit triangle indices.
    void InitializeSpherical();
    // GL texture of a picture file, 0 when it does not open or decode.
    unsigned int CreateTextrue(eString path);
    // View and projection from the sun onto a sphere of the given radius.
    void CompulateSunMatrix(eViewport* viewport, eVector3T<double> sun, double radius);

    float m_fLightBrightNess;
    float m_fLightSpotSize;
    float m_fLightFactor;
    eString m_strEarthMapPicture;
    eString m_strEarthElevationPicture;
    float m_arAmbientColor[3];
    float m_arAmbientSHLightColor[3];
    float m_arSpotLightColor[3];
    float m_arAmbientSHLightCoefficients[3];
    float m_arLightColor[3];
    float m_arSunDirection[3];
    double m_arSHFirstOrder[6][2];
    eVector3T<double> m_arSHCoefficients[9];
    int m_nLatitudeCount;
    int m_nLongitudeCount;
    int m_nWidth;
    int m_nHeight;
    eSharedName m_nFrameBuffer;
    eSharedName m_nDepthTexture; // keeps reading its number after UnInitialize
    eSharedName m_nSpareTexture;
    eSharedName m_nEarthMapTexture;
    eSharedName m_nElevationTexture;
    unsigned char m_bInitialized;
    unsigned char m_bUseTexture;
    unsigned char m_bUseShadow;
    double m_dHeightBase;
    double m_dHeightScale;
    eVector3T<double> m_vSunPosition;
    eVector3T<float> m_vDiffuseColor;
    eMatrix4T<float> m_matSunWorld;
    eMatrix4T<float> m_matSunView;
    eMatrix4T<float> m_matSunProjection;
    eMatrix4T<float> m_matSunSpace;
    eShared<eIndexData> m_pIndexData;
    eShared<eVertexData> m_pVertexData;
    eShared<eTechnique> m_pTechnique;

private:
    static void Store(float* dst, eVector3T<float> const& c)
    {
        dst[0] = c.x;
        dst[1] = c.y;
        dst[2] = c.z;
    }
    static eVector3T<float> Load(float const* src)
    {
        return eVector3T<float>(src[0], src[1], src[2]);
    }
    void Release();
    void SendSharedUniforms(eProgram* p, eShaderUniform* u, eCamera* camera, eRenderEngine* engine);
    void SendPassUniforms(eProgram* p, eShaderUniform* u, float texture, float shadow, float pass,
                          eMatrix4T<float> const* matrices, bool passFirst);
    void DrawMesh(eRenderSystem* rs);
};

} // namespace KYR
