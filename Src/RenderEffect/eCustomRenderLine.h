// The application's own coloured polylines: each list of vertices becomes one mesh drawn as
// a line strip (or any other operation type), coloured per vertex, by one colour, or by a
// colour table. Vertices are geographic (longitude, latitude in degrees, height in metres)
// and are placed by the program for the scene's projection.
#pragma once
#include "eEnums.h"
#include "eRenderObject.h"
#include "eShared.h"
#include "eString.h"
#include "eVector4.h"
#include <vector>

namespace KYR
{

class eImageData;
class ePass;

// One input vertex: position and colour, 16 bytes.
struct tagColorVertex3r
{
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    unsigned char r = 255;
    unsigned char g = 255;
    unsigned char b = 255;
    unsigned char a = 255;
};
static_assert(sizeof(tagColorVertex3r) == 16, "a line vertex is 16 bytes");

class eCustomRenderLine : public eRenderObject
{
public:
    // Program-specific uniform roles of "CustomRenderLine", as indices into
    // eShaderUniform::m_nCustom, in the order of the program's role line.
    enum eRole
    {
        eR_PROJ_KIND = 0,       // how geographic vertices are placed (0 globe, 1.. plane)
        eR_RELATIVE_HEIGHT = 1, // metres added to every vertex's height
        eR_USE_TEXTURE = 2,     // 1: the colour comes from the texture on unit 0
    };

    eCustomRenderLine();
    // Copies share the vertex lists' meshes, the material and the texture; the last
    // holder frees each.
    eCustomRenderLine(eCustomRenderLine const& other);
    eCustomRenderLine& operator=(eCustomRenderLine const& other);
    ~eCustomRenderLine() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    using eRenderObject::Reset;
    // Drops the meshes and their buffers; the vertex lists stay, and the next Initialize
    // builds the meshes from them again.
    unsigned char Reset() override;
    void AddMesh(eMesh* mesh) override;

    // Appends to the current list; the first vertex after CreateLine starts a new list.
    void AddVertex(tagColorVertex3r& vertex);
    void CreateLine() { m_bNewLine = 1; }
    void ClearVertex();
    void SetRelativeHeight(float height) { m_fRelativeHeight = height; }
    float GetRelativeHeight() const { return m_fRelativeHeight; }
    void SetLineWidth(float const& width);
    float GetLineWidth() const { return m_fLineWidth; }
    // One colour for every vertex: a 1 x 1 texture of it replaces the vertex colours.
    void SetColor(eVector4T<unsigned char> color);
    eVector4T<unsigned char> GetColor() const { return m_cColor; }
    // A colour table picture: each vertex's red byte picks its colour along the table.
    void SetColorTable(eString file, int filter);
    void SetOperationType(eOperationType type) { m_eOperationType = type; }
    eOperationType GetOperationType() const { return m_eOperationType; }
    int GetLineCount() const { return (int)m_arLines.size(); }

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char EndRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    // Adds a mesh of this object's own to the list the base draws and frees.
    void HoldMesh(eMesh* mesh);
    void DestroyMeshes();
    // Makes `material` this object's material, dropping the one held before.
    void HoldMaterial(eMaterial* material);
    ePass* GetPass();

    std::vector<std::vector<tagColorVertex3r>> m_arLines;
    unsigned char m_bNewLine;
    float m_fLineWidth;
    float m_fRelativeHeight;
    eVector4T<unsigned char> m_cColor;
    // The colour texture: a 1 x 1 picture of the colour, or a colour table. It is not the
    // base's texture, which stays empty.
    eShared<eTexture> m_pTexture;
    unsigned char m_bUseTexture;
    eOperationType m_eOperationType;

private:
    void ShareFrom(eCustomRenderLine const& other);
    // The picture of SetColor's texture, kept so that the texture can be uploaded again
    // after UnInitialize.
    eShared<eImageData> m_spColorImage;
};

} // namespace KYR
