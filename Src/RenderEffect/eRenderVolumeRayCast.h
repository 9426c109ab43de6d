// A three-dimensional field of one byte per voxel over a geographic rectangle and a height
// range, drawn by ray casting: the unit cube's front faces go into an off-screen texture,
// then its back faces let the program march through the 3-D texture between the two,
// mapping each sample through a colour table and an alpha transfer function.
#pragma once
#include "eMatrix4.h"
#include "eRect.h"
#include "eRenderObject.h"
#include "eShared.h"
#include "eString.h"
#include "eVector2.h"
#include "eVector3.h"
#include "eVector4.h"
#include <cstddef>
#include <vector>

namespace KYR
{

class eVertexData;
class eIndexData;
class eRenderProgram;

class eRenderVolumeRayCast : public eRenderObject
{
public:
    // Program-specific uniform roles of "VolumeRayCast", as indices into
    // eShaderUniform::m_nCustom, in the order of the program's role line.
    enum eRole
    {
        eR_RAY_PASS = 0,        // 1 while the front faces are written, 0 while marching
        eR_SCREEN_SIZE = 1,     // viewport width and height, for reading the entry texture
        eR_STEP_SIZE = 2,       // ray step in texture space
        eR_TEX_MATRIX = 3,      // cube coordinates to volume coordinates
        eR_CAMERA_POSITION = 4, // relative to the reference centre
        eR_LIGHT_POSITION = 5,
        eR_COLOR = 6,         // tint of the volume
        eR_ENTRY_SAMPLER = 7, // unit 2
        eR_TRANSFER_SAMPLER = 8,
        eR_COLOR_SAMPLER = 9,
        eR_VOLUME_SAMPLER = 10,
    };

    eRenderVolumeRayCast();
    // Copies share the voxels waiting for upload, the cube and every OpenGL object; the last
    // holder frees each.
    eRenderVolumeRayCast(eRenderVolumeRayCast const&) = default;
    eRenderVolumeRayCast& operator=(eRenderVolumeRayCast const&) = default;
    ~eRenderVolumeRayCast() override;

    unsigned char Initialize(eRenderEngine*) override;
    // Drops the waiting voxels and the cube's buffers; textures and frame buffer stay.
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;
    using eRenderObject::Reset;
    // Does nothing and reports failure: the volume has no state to reset apart from
    // UnInitialize.
    unsigned char Reset() override;

    // Reads width * height * depth bytes, x fastest, no header. A file that does not open
    // changes nothing but the sizes; a short one drops the voxels waiting for upload.
    void SetVolume3DTex(char const* path, unsigned int width, unsigned int height,
                        unsigned int depth);
    // Takes over `data` (from new[], width * height * depth bytes); the library frees it
    // once it is uploaded.
    void SetVolume3DTex(unsigned int width, unsigned int height, unsigned int depth,
                        unsigned char* data);
    void SetBound(eRect2D& bound);
    eRect2D GetBound() { return m_bound; }
    void SetClipBound(eRect2D& bound);
    eRect2D GetClipBound() { return m_clipBound; }
    void SetHeight(eVector2T<double>& height);
    eVector2T<double> GetHight() { return m_heightRange; }
    void SetClipHeight(eVector2T<double>& height);
    eVector2T<double> GetClipHeight() { return m_clipHeight; }
    void SetColorPath(eString path);
    eString GetColorPath() { return m_colorPath; }
    void SetEigenValue(float value);
    void SetEigenValueSpan(float span);
    // RGBA per entry; a table shorter than 256 repeats.
    void SetVolumeColorRGBA(std::vector<eVector4T<double>> table);
    void SetStepSize(float step) { m_stepSize = step; }

protected:
    unsigned char CreatTextrue(eSharedName& texture, eString const& path);
    void InitializeVertexBuffer();
    void InitializeFrameBuffer();
    void DeleteBuffer();
    void RecreateVolumeTex();
    void RecreateColorTex();
    void RecreateAlphaTex();
    eMatrix4T<float> CreatTexMatrix(eVector3T<double> const& fullMin,
                                    eVector3T<double> const& fullMax,
                                    eVector3T<double> const& shownMin,
                                    eVector3T<double> const& shownMax);
    void RecalculateScale(eCamera* camera);
    void RecalculatePoint(eRenderEngine* engine);

    bool m_initialized;
    unsigned int m_width, m_height, m_depth;
    double m_scaleX, m_scaleY, m_scaleZ;
    float m_stepSize;
    float m_eigenValue;
    float m_eigenValueSpan;
    eVector2T<double> m_heightRange;
    eRect2D m_bound;
    eVector2T<double> m_clipHeight;
    eRect2D m_clipBound;
    eShared<unsigned char[]> m_volumeData;
    size_t m_volumeBytes; // bytes m_volumeData holds
    std::vector<eVector4T<double>> m_transferTable;
    bool m_colorDirty;
    bool m_alphaDirty;
    bool m_volumeDirty;
    bool m_geometryDirty;
    eSharedName m_entryTexture;
    eSharedName m_colorTexture;
    eSharedName m_transferTexture;
    eSharedName m_volumeTexture;
    eSharedName m_frameBuffer;
    eSharedName m_depthBuffer;
    int m_bufferWidth, m_bufferHeight;
    eString m_colorPath;
    eMatrix4T<float> m_modelMatrix;
    eMatrix4T<float> m_texMatrix;
    eVector3T<double> m_center;
    eShared<eVertexData> m_cubeVertices;
    eShared<eIndexData> m_cubeIndices;

private:
    // A transfer function of 256 RGBA bytes from a raw file, as a new 1-D texture on unit 1.
    unsigned int initTFF1DTex(char const* path);
    static float Smoothstep(float t);
    void SetStdFunction(float center, float span, int mode);
    void SetStdFunction(float center, float span, int component, bool descending);
    void ResizeFrameBuffer(int width, int height);
    // Matrices, tint, eye and light; makes the program current with its blending.
    void SendFrameUniforms(eRenderProgram* rp, eCamera* camera);
    void DrawCube(eRenderSystem* rs);
};

} // namespace KYR
