// Many polylines of fixed shape drawn as ribbons of a constant width in pixels, revealed point
// by point. Each line is built once into 32-byte vertices that carry what the vertex stage
// needs to extrude the ribbon on the screen (directions in and out, corner signs, turning
// angles, lengths along the line); its colours sit in a separate stream that Update rewrites
// from any thread, so a growing line costs a few bytes per point and no geometry.
#pragma once
#include "eGrowLine.h"
#include "eRenderGrowSet.h"
#include <vector>

namespace KYR
{

class eRenderLineGrowSet : public eRenderGrowSet
{
public:
    // Uniform roles of the program, as indices into eShaderUniform::m_nCustom.
    enum eLineRole
    {
        eR_POSITION_KIND = 0, // 0: positions are local to the anchor
        eR_STREAM_WEIGHT = 1, // 1: colours come from the colour stream, not u_color
        eR_FEATHER = 2,       // 1: edges fade out over the edge width
        eR_DASH_LENGTH = 3,   // metres along the line; 0 draws it solid
        eR_GAP_LENGTH = 4,
        eR_DASH_OFFSET = 5,
        eR_MITER_LIMIT = 6, // longest corner, in half widths
        eR_OPACITY = 7,     // the set's transparency
        eR_WIDTH = 8,       // per line: width times the pixel unit
        eR_LINE_OPACITY = 9,
        eR_EDGE = 10, // per line: edge width times the pixel unit
    };

    eRenderLineGrowSet();
    eRenderLineGrowSet(eRenderLineGrowSet const&) = default;
    eRenderLineGrowSet& operator=(eRenderLineGrowSet const&) = default;
    ~eRenderLineGrowSet() override;

    Type GetType() override;
    unsigned char UnInitialize(eRenderEngine*) override;
    // Draws nothing while the set is fully transparent.
    unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*) override;
    // The world matrix, then the set's transparency.
    unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*, eRenderProgram*) override;

    unsigned char CreateVertexBuffer() override;
    // Builds the line's geometry into the buffers after the lines before it; false for a line
    // of fewer than two points.
    virtual unsigned char AddLine(eGrowLine* line);
    // Rewrites the colour of one point: the vertices that end the segment before it and start
    // the segment after it. False for an index outside the line.
    virtual unsigned char UpdateLine(eGrowLine* line, int index, eVector4T<unsigned char>& color);

    // Keeps a copy of the line, with its geometry in the buffers (a GL context must be
    // current); false, keeping nothing, when it cannot be built.
    unsigned char Add(eGrowLine const* line);
    eGrowLine* Get(int index);
    int GetCount() const { return (int)m_arLines.size(); }
    // Deletes the lines and the queued colours for them. The buffers keep their contents and
    // new lines go after the old ones.
    void RemoveAll();
    // Queues a colour for a point of a line of this set; any thread may call it.
    unsigned char Update(eGrowLine* line, int index, eVector4T<unsigned char>& color);

    void SetTransparent(float transparent) { m_fTransparent = transparent; }
    float GetTransparent() const { return m_fTransparent; }

    // The unit that the set multiplies pixel widths by, from the engine's resolution and the
    // coordinate system.
    static double PixelSize(eRenderEngine* engine);

protected:
    // Corner entries of a polyline of N >= 2 points as vertices from `start` on: four per
    // segment (start -1, start +1, end -1, end +1 across the ribbon) and six indices.
    void VertexPolyline(eVertexData& vertexData, eIndexExData& indexData, int start,
                        std::vector<eVector3T<float>>& points);

    long long VertexCapacity() const override;
    long long IndexCapacity() const override;
    unsigned char ApplyUpdate(eGrowShape* shape, int index,
                              eVector4T<unsigned char>& color) override;

    float m_fTransparent;
    std::vector<eShared<eGrowLine>> m_arLines;
};

} // namespace KYR
