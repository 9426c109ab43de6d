// Open polylines of an annotation, in pixels around its anchor: each ring of points is drawn
// as GL_LINES segments with the line colour, width, smoothing and stipple read at draw time,
// so a change of style needs no rebuild of the vertex store.
#pragma once
#include "eRenderPart.h"
#include <vector>

namespace KYR
{

class eRenderLinePart : public eRenderPart
{
public:
    eRenderLinePart();
    eRenderLinePart(eRenderLinePart const&) = default;
    eRenderLinePart& operator=(eRenderLinePart const&) = default;
    ~eRenderLinePart() override;

    Type GetType() override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    eRect2D GetBounds() override;

    // `counts` holds the points of each of the `rings` rings; `points` all of them in order.
    void SetPolyline(ePoint2D const* points, int const* counts, int rings);
    // Appends copies of the points and counts to the caller's vectors.
    void GetPolyline(std::vector<ePoint2D>& points, std::vector<int>& counts);

    void SetLineWidth(float width) { m_fLineWidth = width; }
    float GetLineWidth() const { return m_fLineWidth; }
    void SetLineColor(eVector4T<unsigned char> const& color) { m_cLineColor = color; }
    eVector4T<unsigned char> GetLineColor() const { return m_cLineColor; }
    void SetLineSmooth(unsigned char smooth) { m_bLineSmooth = smooth; }
    unsigned char IsLineSmooth() const { return m_bLineSmooth; }
    void SetLineStipple(unsigned char stipple) { m_bLineStipple = stipple; }
    unsigned char IsLineStipple() const { return m_bLineStipple; }
    // As glLineStipple: each bit of the pattern covers `factor` pixels.
    void SetLinePattern(int factor, unsigned short pattern)
    {
        m_nLineFactor = factor;
        m_nLinePattern = pattern;
    }
    unsigned short GetLinePattern() const { return m_nLinePattern; }
    int GetLineFactor() const { return m_nLineFactor; }
    // Kept for the application; drawing does not read it.
    void SetSystemLine(unsigned char system) { m_bSystemLine = system; }
    unsigned char IsSystemLine() const { return m_bSystemLine; }

protected:
    void CreateBuffer(eRenderEngine*) override;

    unsigned char m_bSystemLine;
    float m_fLineWidth;
    eVector4T<unsigned char> m_cLineColor;
    unsigned char m_bLineSmooth;
    unsigned char m_bLineStipple;
    int m_nLineFactor;
    unsigned short m_nLinePattern;
    std::vector<ePoint2D> m_arPoints;
    std::vector<int> m_arCounts;
};

} // namespace KYR
