// Base of the mesh-based effects: a list of meshes, a material, a texture and a
// float model matrix. One frame is: queue, start, draw each mesh, end.
#pragma once
#include "eMatrix4.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"
#include "eVector3.h"
#include <vector>

namespace KYR
{

class eMesh;
class eMaterial;
class eTexture;

enum EnRenderMode
{
    eRM_POINT = 0,
    eRM_LINE = 1,
    eRM_FILL = 2,
    eRM_FILL_AND_LINE = 3,
};

class eRenderObject : public eRenderable
{
public:
    eRenderObject();
    // Copies share the meshes, material and texture; the last holder of each frees it, so
    // copies may be destroyed and assigned in any order.
    eRenderObject(eRenderObject const&) = default;
    eRenderObject& operator=(eRenderObject const&) = default;
    ~eRenderObject() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    double GetSquaredViewDepth(eCamera*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    using eRenderable::Reset;
    // The object takes the mesh; a mesh it holds already is shared, not taken twice.
    virtual void AddMesh(eMesh*);
    virtual unsigned char Reset();
    virtual void RenderCallBack();

    eMesh* GetMesh(int index);
    // The object takes the material. It no longer holds the one it had, which goes with its
    // last holder (a copy may still hold it).
    void SetMaterial(eMaterial* material);
    eMaterial* GetMaterial() { return m_pMaterial; }
    void SetMatrix(eMatrix4T<double> const& matrix);
    eMatrix4T<float> GetMatrix() { return m_Matrix; }
    void SetRenderMode(EnRenderMode mode) { m_eRenderMode = mode; }
    void SetTextureFile(eString file);
    void connectCallbackRender(void* user, void (*fn)(void*));
    // Splits a double into a high float and the float of the remainder.
    static void DoubleToTwoFloat(double value, float& high, float& low);
    static void DoubleToTwoFloat(eVector3T<double> const& value, eVector3T<float>& high,
                                 eVector3T<float>& low);

protected:
    virtual unsigned char CreateBuffer();
    virtual unsigned char DestroyBuffer();
    virtual unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*);
    virtual unsigned char EndRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*);
    void ComputeProjectionKind(eRenderEngine*, eCamera*);

    unsigned char m_bInitialized;
    int m_nProjectionKind;
    EnRenderMode m_eRenderMode;
    std::vector<eShared<eMesh>> m_arMeshes;
    eShared<eMaterial> m_pMaterial;
    eShared<eTexture> m_pTexture;
    eMatrix4T<float> m_Matrix;
    double m_dSquaredViewDepth;
    void* m_pCallbackUser;
    void (*m_pfnCallbackRender)(void*);

private:
    void init_callbacks();
};

} // namespace KYR
