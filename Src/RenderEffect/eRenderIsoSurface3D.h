// A finished triangle mesh, such as an iso-surface computed elsewhere, drawn as a lit,
// translucent solid standing on the globe or the map. The caller keeps the vertex arrays;
// the object draws them from its own vertex array object as a plain triangle list, and keeps
// an order-independent blending strategy at the viewport's size for the host to fill and
// compose, so that nested surfaces show through one another in any order.
#pragma once
#include "eRenderObject.h"
#include "eShared.h"
#include "eVector3.h"
#include "eWOITStrategy.h"

namespace KYR
{

class ePass;
class eViewport;

// One vertex of the mesh, 32 bytes.
struct tagNormalTextureVertex3r
{
    float position[3];
    float normal[3];
    float texcoord[2];
};

class eRenderIsoSurface3D : public eRenderObject
{
public:
    // Program-specific uniform roles of "ISOSurface3D", as indices into
    // eShaderUniform::m_nCustom.
    enum eRole
    {
        eR_SUN_DIRECTION = 0, // towards the sun, eye space, unit length
    };

    // The arrays stay the caller's and must live until the buffers are made; `indices` may
    // be null. The mesh is drawn by its first `vertexCount` vertices as triangles.
    eRenderIsoSurface3D(tagNormalTextureVertex3r* vertices, int vertexCount, unsigned int* indices,
                        int indexCount);
    // Copies share the buffers and the strategy; the last holder frees each.
    eRenderIsoSurface3D(eRenderIsoSurface3D const&) = default;
    eRenderIsoSurface3D& operator=(eRenderIsoSurface3D const&) = default;
    ~eRenderIsoSurface3D() override;

    Type GetType() override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    // The model's centre (moved to the origin before scaling), where it stands (longitude
    // and latitude in degrees, height in metres), and its uniform scale.
    void SetTranform(eVector3T<double> center, eVector3T<double> position, double scale);
    void SetMaterialDiffuse(eVector3T<double> colour);
    void SetMaterialSpecular(eVector3T<double> colour);
    void SetMaterialShinnes(float shininess);
    void SetAlpha(float alpha) { m_fAlpha = alpha; }
    void SetPicked(bool picked) { m_bPicked = picked; }
    bool IsPicked() { return m_bPicked; }
    void SetUseEBO(bool use) { m_bUseEBO = use; }
    // The strategy whose targets this surface is drawn into, for the host to fill and
    // compose around the translucent draws.
    eWOITStrategy* GetStrategy() { return m_pStrategy; }

protected:
    unsigned char CreateBuffer() override;
    unsigned char DestroyBuffer() override;
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    eSharedName m_nVertexArray;
    eSharedName m_nVertexBuffer;
    eSharedName m_nIndexBuffer;
    tagNormalTextureVertex3r* m_pVertices;
    unsigned int* m_pIndices;
    int m_nVertexCount;
    int m_nIndexCount;
    bool m_bUseEBO;
    bool m_bPicked;
    float m_fAlpha;
    eVector3T<double> m_vCenter;
    eVector3T<double> m_vPosition;
    double m_dScale;
    eShared<eWOITStrategy> m_pStrategy;

private:
    ePass* Pass();
    // Rebuilds the strategy's targets when the viewport's size has changed.
    void FitStrategy(eViewport* viewport);
    // Model to camera-relative world: scale about the centre, stood at m_vPosition.
    eMatrix4T<float> WorldMatrix(eRenderEngine* engine, eCamera* camera);
    void DrawTriangles();
};

} // namespace KYR
