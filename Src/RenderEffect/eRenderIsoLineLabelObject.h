// The values of a contour map's lines, written as text lying on the globe or the map: one
// label at each end of an open line and one at the top of a closed line, running along the
// line and turned so that it always reads from left to right. Labels are set from thirteen
// glyphs ("0123456789.+-") made once; their quads are rebuilt every frame.
#pragma once
#include "eArray.h"
#include "ePoint.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"
#include "eVector4.h"
#include <map>

namespace KYR
{

class ePass;
struct tagTextGlyph;

class eRenderIsoLineLabelObject : public eRenderable
{
public:
    // The characters a label can hold; their glyphs are made once.
    static char const* const kAlphabet;

    eRenderIsoLineLabelObject();
    // Copies share the pass and the glyphs, and copy the lines, values and labels.
    eRenderIsoLineLabelObject(eRenderIsoLineLabelObject const&) = default;
    eRenderIsoLineLabelObject& operator=(eRenderIsoLineLabelObject const&) = default;
    ~eRenderIsoLineLabelObject() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // Lines in degrees (longitude, latitude), one value each. The labels they give are added
    // to those of earlier calls.
    void SetIsoLines(eArray<eArray<ePoint2D>> lines, eArray<double> values);
    // A packed colour (ERGBA).
    void SetLabelColor(unsigned int color);
    eVector4T<unsigned char> GetLabelColor() const { return m_LabelColor; }
    // Glyph size in pixels; it takes effect at the next Initialize.
    void SetLabelSize(int size) { m_nLabelSize = size; }
    int GetLabelSize() const { return m_nLabelSize; }

    int GetLabelCount() const { return m_arLabels.GetSize(); }
    eString GetLabel(int i) const { return m_arLabels[i]; }
    ePoint2D GetLabelPosition(int i) const { return m_arPositons[i]; }
    double GetLabelAngle(int i) const { return m_arAngles[i]; }

protected:
    void CalculateLabelPosition();
    // Direction from a to b in degrees, turned into -90..90 so that text along it reads
    // from left to right.
    double CalculateAngle(ePoint2D a, ePoint2D b);
    // The point with the greatest y (the first of equals), with its neighbours' indices on
    // the closed line.
    ePoint2D GetLineTopPnt(eArray<ePoint2D> const& line, int& prev, int& next);
    void RemoveAllObject();

    unsigned char m_bInitialized;
    eVector4T<unsigned char> m_LabelColor;
    int m_nLabelSize;
    eArray<eArray<ePoint2D>> m_arLines;
    eArray<double> m_arValues;
    eArray<ePoint2D> m_arPositons;
    eArray<double> m_arAngles;
    eArray<eString> m_arLabels;
    eShared<ePass> m_pPass;
    // Glyphs of the host's text cache, which keeps them for the process.
    std::map<char, tagTextGlyph*> m_charGlyphs;
};

} // namespace KYR
