// Drawing state of the material system: a material holds techniques, a technique holds
// passes, and a pass carries the program name with blending, depth, raster and lighting
// settings that eRenderQueueVisitor::BeginPass applies.
#pragma once
#include "eEnums.h"
#include "eString.h"
#include "eVector4.h"

#include <vector>

namespace KYR
{

class ePass
{
public:
    ePass();
    ~ePass();

    // Name of the host program that draws this pass.
    void SetProgram(eString const& name) { m_strProgram = name; }
    eString const& GetProgram() const { return m_strProgram; }

    void SetBlendingFunc(eBlendFactor source, eBlendFactor dest)
    {
        m_eSourceBlend = source;
        m_eDestBlend = dest;
    }
    eBlendFactor GetSourceBlendFactor() const { return m_eSourceBlend; }
    eBlendFactor GetDestBlendFactor() const { return m_eDestBlend; }
    // Blending is anything other than (ONE, ZERO).
    unsigned char IsTransparent() const
    {
        return (m_eSourceBlend != eBF_ONE || m_eDestBlend != eBF_ZERO) ? 1 : 0;
    }

    void SetDepthCheckEnabled(unsigned char enabled) { m_bDepthCheck = enabled ? 1 : 0; }
    unsigned char GetDepthCheckEnabled() const { return m_bDepthCheck; }
    void SetDepthWriteEnabled(unsigned char enabled) { m_bDepthWrite = enabled ? 1 : 0; }
    unsigned char GetDepthWriteEnabled() const { return m_bDepthWrite; }
    void SetDepthFunc(eCompareFunction func) { m_eDepthFunc = func; }
    eCompareFunction GetDepthFunc() const { return m_eDepthFunc; }
    // Kept for the host's sorting; BeginPass does not use it.
    void SetAutoDepthEnabled(unsigned char enabled) { m_bAutoDepth = enabled ? 1 : 0; }
    unsigned char GetAutoDepthEnabled() const { return m_bAutoDepth; }
    // Polygon offset: glPolygonOffset(slope scale, constant).
    void SetDepthBiasConstant(float bias) { m_fDepthBiasConstant = bias; }
    float GetDepthBiasConstant() const { return m_fDepthBiasConstant; }
    void SetDepthBiasSlopeScale(float scale) { m_fDepthBiasSlopeScale = scale; }
    float GetDepthBiasSlopeScale() const { return m_fDepthBiasSlopeScale; }

    void SetLineWidth(float width) { m_fLineWidth = width; }
    float GetLineWidth() const { return m_fLineWidth; }
    void SetPointSize(float size) { m_fPointSize = size; }
    float GetPointSize() const { return m_fPointSize; }
    void SetPointSpriteEnabled(unsigned char enabled) { m_bPointSprite = enabled ? 1 : 0; }
    unsigned char GetPointSpriteEnabled() const { return m_bPointSprite; }
    void SetProjectionMode(eProjectionMode mode) { m_eProjectionMode = mode; }
    eProjectionMode GetProjectionMode() const { return m_eProjectionMode; }
    void SetAutoMipMap(unsigned char enabled) { m_bAutoMipMap = enabled ? 1 : 0; }
    unsigned char GetAutoMipMap() const { return m_bAutoMipMap; }

    // Lighting: the effects hand these values to their programs themselves.
    void SetLightingEnabled(unsigned char enabled) { m_bLighting = enabled ? 1 : 0; }
    unsigned char IsLightingEnabled() const { return m_bLighting; }
    void SetLightModel(eLightModel model) { m_eLightModel = model; }
    eLightModel GetLightModel() const { return m_eLightModel; }
    void SetAmbient(eVector4T<float> const& c) { m_vAmbient = c; }
    void SetDiffuse(eVector4T<float> const& c) { m_vDiffuse = c; }
    void SetSpecular(eVector4T<float> const& c) { m_vSpecular = c; }
    void SetEmmissive(eVector4T<float> const& c) { m_vEmmissive = c; }
    eVector4T<float> const& GetAmbient() const { return m_vAmbient; }
    eVector4T<float> const& GetDiffuse() const { return m_vDiffuse; }
    eVector4T<float> const& GetSpecular() const { return m_vSpecular; }
    eVector4T<float> const& GetEmmissive() const { return m_vEmmissive; }
    void SetShininess(float shininess) { m_fShininess = shininess; }
    float GetShininess() const { return m_fShininess; }

private:
    eString m_strProgram;
    eBlendFactor m_eSourceBlend = eBF_ONE;
    eBlendFactor m_eDestBlend = eBF_ZERO;
    unsigned char m_bDepthCheck = 1;
    unsigned char m_bDepthWrite = 1;
    eCompareFunction m_eDepthFunc = eCF_LESS_EQUAL;
    unsigned char m_bAutoDepth = 0;
    float m_fDepthBiasConstant = 0.0f;
    float m_fDepthBiasSlopeScale = 0.0f;
    float m_fLineWidth = 1.0f;
    float m_fPointSize = 1.0f;
    unsigned char m_bPointSprite = 0;
    eProjectionMode m_eProjectionMode = ePM_PERSPECTIVE;
    unsigned char m_bAutoMipMap = 0;
    unsigned char m_bLighting = 0;
    eLightModel m_eLightModel = eLM_PHONG;
    eVector4T<float> m_vAmbient{1.0f, 1.0f, 1.0f, 1.0f};
    eVector4T<float> m_vDiffuse{1.0f, 1.0f, 1.0f, 1.0f};
    eVector4T<float> m_vSpecular{0.0f, 0.0f, 0.0f, 1.0f};
    eVector4T<float> m_vEmmissive{0.0f, 0.0f, 0.0f, 1.0f};
    float m_fShininess = 0.0f;
};

// An ordered list of passes; owns them.
class eTechnique
{
public:
    eTechnique();
    ~eTechnique();
    eTechnique(eTechnique const&) = delete;
    eTechnique& operator=(eTechnique const&) = delete;

    ePass* CreatePass();
    // Null when out of range.
    ePass* GetPass(unsigned short index);
    unsigned short GetNumPasses() const { return (unsigned short)m_arPasses.size(); }

private:
    std::vector<ePass*> m_arPasses;
};

// An ordered list of techniques; owns them.
class eMaterial
{
public:
    eMaterial();
    ~eMaterial();
    eMaterial(eMaterial const&) = delete;
    eMaterial& operator=(eMaterial const&) = delete;

    eTechnique* CreateTechnique();
    // Null when out of range.
    eTechnique* GetTechnique(unsigned short index);
    // The first technique, or null when there is none.
    eTechnique* GetBestTechnique();
    unsigned short GetNumTechniques() const { return (unsigned short)m_arTechniques.size(); }

    void SetName(eString const& name) { m_strName = name; }
    eString const& GetName() const { return m_strName; }

private:
    eString m_strName;
    std::vector<eTechnique*> m_arTechniques;
};

} // namespace KYR
