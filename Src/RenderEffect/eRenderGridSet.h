// Frame of the sets that sort points into square cells of a fixed size on the screen: the
// anchor, local frame and conversions of the cube sets, a pass that draws over the ground
// without depth, and the cell size, digit size and digit colour. The cells lie in the
// local frame's x-y plane; a derived set counts its points into them and draws them.
#pragma once
#include "eRenderCubeSet.h"

namespace KYR
{

class eRenderGridSet : public eRenderCubeSet
{
public:
    // Uniform roles of the grid programs after the frame's own (projection mode, lighting,
    // size float; the sun's slot stays free).
    enum eGridRole
    {
        eR_POSITION = eR_OWN, // where a cell's quad or a glyph goes, local frame
    };

    eRenderGridSet();
    eRenderGridSet(eRenderGridSet const&) = default;
    eRenderGridSet& operator=(eRenderGridSet const&) = default;
    ~eRenderGridSet() override;

    Type GetType() override;
    // The world matrix only: the grid programs are not lit.
    unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*, eRenderProgram*) override;
    virtual unsigned char CreateBuffers();
    virtual unsigned char DestroyBuffers();

    void SetGridSize(float size) { m_fGridSize = size; }
    float GetGridSize() const { return m_fGridSize; }
    void SetTextSize(int size) { m_nTextSize = size; }
    int GetTextSize() const { return m_nTextSize; }
    void SetTextColor(eVector4T<unsigned char> color) { m_cTextColor = color; }
    eVector4T<unsigned char> GetTextColor() const { return m_cTextColor; }

protected:
    // Blended, no depth check or write, pushed back by a bias of 100, unlit.
    void SetupPass(ePass* pass) override;

    float m_fGridSize;
    int m_nTextSize;
    eVector4T<unsigned char> m_cTextColor;
};

} // namespace KYR
