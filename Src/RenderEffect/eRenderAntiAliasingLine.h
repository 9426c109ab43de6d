// A polyline drawn as a smooth strip of constant width in pixels. Each point is stored twice
// (one vertex per side of the line) in one vertex buffer with a phantom point at each end;
// the draw reads that buffer three times at shifted offsets, so that the program sees the
// previous, current and next point of every strip vertex from a single upload.
#pragma once
#include "eCustomRenderLine.h"
#include "eMesh.h"
#include "eVector3.h"
#include <vector>

namespace KYR
{

class eVertexData;
class eIndexData;

// One chunk of a line ready for upload: 20-byte vertices (x, y, z, length along the line,
// side -1 or +1), 16-bit strip indices, and the chunk's total length.
struct tagAntiAliasLineData
{
    std::vector<float> m_arVertices;
    std::vector<unsigned short> m_arIndices;
    double m_dLength = 0.0;
    int GetVertexCount() const { return (int)(m_arVertices.size() / 5); }
};

// The strip mesh of one chunk, with the chunk's total length.
class eAntiAliasLineMesh : public eMeshPlot
{
public:
    double m_dLength = 0.0;
};

class eRenderAntiAliasingLine : public eCustomRenderLine
{
public:
    // Program-specific uniform roles of "DashLine3D", in the order of its role line.
    enum eRole
    {
        eR_REFERENCE_CENTER = 0, // the camera's reference centre, world
        eR_DASHED = 1,           // 0 solid, 1 dashes along the length
        eR_GEOGRAPHIC = 2,       // 1: positions are longitude, latitude, height
        eR_RELATIVE_HEIGHT = 3,  // metres added to every point's height
        eR_DASH_LENGTH = 4,      // dash and gap, in units of the length along the line
        eR_GAP_LENGTH = 5,
        eR_DASH_OFFSET = 6,
        eR_OPACITY = 7,
        eR_LINE_WIDTH = 8, // pixels
        eR_FEATHER = 9,    // pixels of the soft edge
        eR_PROJ_KIND = 10,
        eR_VIEWPORT = 11,     // x, y, width, height in pixels
        eR_TOTAL_LENGTH = 12, // of the chunk being drawn
    };

    // Points per chunk: 2 x 30000 + 4 vertices stay within 16-bit indices.
    static int const kChunkPoints = 30000;

    eRenderAntiAliasingLine();
    eRenderAntiAliasingLine(eRenderAntiAliasingLine const&) = default;
    eRenderAntiAliasingLine& operator=(eRenderAntiAliasingLine const&) = default;
    ~eRenderAntiAliasingLine() override;

    // Builds the strips from the vertex lists, when there are any; meshes given to the line
    // otherwise (AddMesh, or the iso-lines' AddLine) are drawn as they are.
    unsigned char Initialize(eRenderEngine*) override;
    // Deletes the buffers and keeps the meshes with their processor copies.
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    // Cuts `points` into chunks of kChunkPoints (a last chunk of a single point is dropped,
    // and neighbouring chunks share no point), skips points that repeat their predecessor in
    // x and y, and appends one record per chunk to `out`. False, with nothing appended, when
    // there are no points.
    static unsigned char CreateAntialiasLineData(std::vector<eVector3T<double>> const& points,
                                                 std::vector<tagAntiAliasLineData>& out);

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    // Upload every mesh and delete its buffers, keeping the processor copies, so that the
    // strips come back after UnInitialize and after a mesh is added to an initialised line.
    unsigned char CreateBuffer() override;
    unsigned char DestroyBuffer() override;
    void RenderFrame(eOperationType type, eVertexData* vertices, eIndexData* indices);
    // A new strip mesh holding `data`; null for a record without vertices.
    static eAntiAliasLineMesh* MakeMesh(tagAntiAliasLineData const& data);

private:
    // Strip vertices of n points with their lengths, with a phantom point before the first
    // and after the last; fewer than two points give nothing.
    static void BuildChunk(std::vector<eVector3T<double>> const& points,
                           std::vector<double> const& lengths, tagAntiAliasLineData& out);
};

} // namespace KYR
