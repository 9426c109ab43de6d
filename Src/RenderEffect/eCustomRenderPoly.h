// The application's own filled polygons as one triangle mesh: each outline, given vertex by
// vertex, is cut into triangles in its x-y plane, keeping each vertex's height and colour.
// Positions are in the object's model space, placed in the world by its matrix.
#pragma once
#include "eCustomRenderLine.h"
#include "eRenderObject.h"
#include "eShared.h"
#include <vector>

namespace KYR
{

class eCustomRenderPoly : public eRenderObject
{
public:
    // Program-specific uniform roles of "Color".
    enum eRole
    {
        eR_USE_VERTEX_COLOR = 0, // 1: the vertex colours multiply the colour
    };

    eCustomRenderPoly();
    // Copies share the mesh, the outlines' triangles and the material; the last holder frees
    // each.
    eCustomRenderPoly(eCustomRenderPoly const& other);
    eCustomRenderPoly& operator=(eCustomRenderPoly const& other);
    ~eCustomRenderPoly() override;

    Type GetType() override;
    // Triangulates the outlines into the mesh and uploads it.
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    using eRenderObject::Reset;
    // Drops the buffers; the outlines stay, and the next Initialize fills the mesh again.
    unsigned char Reset() override;
    void AddMesh(eMesh* mesh) override;

    // Appends a corner to the current outline; the first corner after CreatePoly starts a
    // new one. A closing corner that repeats the first may be given or left out.
    void AddVertex(tagColorVertex3r& vertex);
    void CreatePoly() { m_bNewPoly = 1; }
    void ClearVertex();
    int GetPolyCount() const { return (int)m_arPolys.size(); }
    // Outlines that could not be cut cleanly (self-crossing, or no area) at the last
    // Initialize; what ear clipping made of them is still drawn.
    int GetFailedPolyCount() const { return m_nFailedPolys; }

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char EndRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    // Fills the first mesh with the outlines' triangles.
    void FillMesh();

    // Whether the mesh holds the triangles of the current outlines.
    unsigned char m_bPolyInitialized;

private:
    void ShareFrom(eCustomRenderPoly const& other);

    std::vector<std::vector<tagColorVertex3r>> m_arPolys;
    unsigned char m_bNewPoly;
    int m_nFailedPolys;
};

} // namespace KYR
