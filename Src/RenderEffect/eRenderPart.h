// Base of the pieces an annotation is built of. A part lays itself out in pixels around the
// annotation's anchor, keeps its own small vertex store, rebuilt only when its content
// changes, and draws inside the compose object's Render with the compose object's pass and
// matrices. Parts are never queued themselves.
#pragma once
#include "ePoint.h"
#include "eRect.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eVector4.h"

namespace KYR
{

class eRenderCompose;
class eCoordSys;
class eVertexData;
class eIndexData;

class eRenderPart : public eRenderable
{
public:
    eRenderPart();
    eRenderPart(eRenderPart const&) = default;
    eRenderPart& operator=(eRenderPart const&) = default;
    ~eRenderPart() override;

    Type GetType() override;
    // Only marks the part ready; the stores are built by the first Render after a change.
    unsigned char Initialize(eRenderEngine*) override;
    // Drops the stores and leaves the part clean: it is built again only after a change.
    unsigned char UnInitialize(eRenderEngine*) override;

    void SetParent(eRenderCompose* parent) { m_pParent = parent; }
    eRenderCompose* GetParent() { return m_pParent; }
    // The part's rectangle in pixels around the anchor (top the larger y); zeros here.
    virtual eRect2D GetBounds();

    // The program every part draws with: a uniform colour times the bound texture.
    static char const* ProgramName() { return "TexcoordA8UniformColor"; }

protected:
    // Rebuilds the stores when the part is dirty.
    virtual void CreateBuffer(eRenderEngine*) {}
    virtual void DestroyBuffer();

    // The steps every part's Render shares: initialise, rebuild if dirty, and set the colour
    // uniform. False when there is nothing to draw (no stores, no program).
    bool BeginDraw(eRenderEngine* engine, eVector4T<unsigned char> const& color);
    // Fresh empty stores with the part vertex layout.
    void NewStores();
    // One vertex of the part layout; x and y are pixels around the anchor.
    void AddVertex(eCoordSys* coordSys, double x, double y, float u, float v,
                   eVector4T<unsigned char> const& color);
    // Uploads both stores and marks the part clean.
    void UploadStores();

    eRenderCompose* m_pParent;
    unsigned char m_bDirty;
    unsigned char m_bInitialized;
    eShared<eVertexData> m_pVertexData;
    eShared<eIndexData> m_pIndexData;
};

} // namespace KYR
