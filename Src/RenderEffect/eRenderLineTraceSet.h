// Moving lines: each path is drawn as a line strip along its time window, a thin fore line
// on a wider back line, each with its own colour, width and optional texture along the
// tail. The base of the list line trace set; copies share the textures.
#pragma once
#include "eRenderTraceSet.h"
#include "eShared.h"

namespace KYR
{

class eRenderLineTraceSet : public eRenderTraceSet
{
public:
    eRenderLineTraceSet();
    eRenderLineTraceSet(eRenderLineTraceSet const&) = default;
    eRenderLineTraceSet& operator=(eRenderLineTraceSet const&) = default;
    ~eRenderLineTraceSet() override;

    Type GetType() override;
    // Loads the textures once.
    unsigned char Initialize(eRenderEngine*) override;
    // Drops the textures.
    unsigned char UnInitialize(eRenderEngine*) override;
    // Initialises if needed, brings the lines up to date, draws when visible and not fully
    // transparent, and advances the clock.
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    // Brings the lines up to date once a frame, on the render thread.
    virtual unsigned char UpdateCache();

    void SetForePath(eString const& path) { m_strForePath = path; }
    eString GetForePath() const { return m_strForePath; }
    void SetBackPath(eString const& path) { m_strBackPath = path; }
    eString GetBackPath() const { return m_strBackPath; }
    void SetForeColor(eVector4T<unsigned char> const& color) { m_ForeColor = color; }
    eVector4T<unsigned char> GetForeColor() const { return m_ForeColor; }
    void SetBackColor(eVector4T<unsigned char> const& color) { m_BackColor = color; }
    eVector4T<unsigned char> GetBackColor() const { return m_BackColor; }
    void SetForeLineWidth(float width) { m_fForeLineWidth = width; }
    float GetForeLineWidth() const { return m_fForeLineWidth; }
    void SetBackLineWidth(float width) { m_fBackLineWidth = width; }
    float GetBackLineWidth() const { return m_fBackLineWidth; }
    void SetEnableForeLine(unsigned char enable) { m_bEnableForeLine = enable; }
    unsigned char IsEnableForeLine() const { return m_bEnableForeLine; }
    void SetEnableBackLine(unsigned char enable) { m_bEnableBackLine = enable; }
    unsigned char IsEnableBackLine() const { return m_bEnableBackLine; }
    void SetLineSmooth(unsigned char smooth) { m_bLineSmooth = smooth; }
    unsigned char IsLineSmooth() const { return m_bLineSmooth; }

protected:
    eString m_strForePath;
    eString m_strBackPath;
    eShared<eTexture> m_pForeTexture;
    eShared<eTexture> m_pBackTexture;
    eVector4T<unsigned char> m_ForeColor;
    eVector4T<unsigned char> m_BackColor;
    float m_fForeLineWidth;
    float m_fBackLineWidth;
    unsigned char m_bEnableForeLine;
    unsigned char m_bEnableBackLine;
    unsigned char m_bLineSmooth;
};

} // namespace KYR
