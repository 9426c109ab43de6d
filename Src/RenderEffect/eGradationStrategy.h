// Two rasters and a time ratio for fading from one to the other. A producer hands in
// textures through SetTexture1/SetTexture2; the consuming gradation object, under its own
// mutex, retires m_pTexture1/m_pTexture2, moves the pending pointers over and sends
// GetTimeRatio to its shader. Nothing here locks, and nothing is freed: copies copy the
// pointers. A texture the consumer has taken is the consumer's (and its copies') to free;
// one still pending is the producer's.
#pragma once

namespace KYR
{

class eTexture;

class eGradationStrategy
{
public:
    eGradationStrategy();
    eGradationStrategy(eGradationStrategy const&) = default;
    eGradationStrategy& operator=(eGradationStrategy const&) = default;
    virtual ~eGradationStrategy();

    void SetCurrentTime(int const& time) { m_nCurrentTime = time; }
    void SetTimeStride(int const& stride) { m_nTimeStride = stride; }
    // Current time over stride, unclamped and unguarded (a zero stride gives inf or NaN).
    float GetTimeRatio();
    // Hands in a texture for the first slot; one still waiting there moves to the second.
    void SetTexture1(eTexture* texture, int pixelFormat);
    // Hands in a texture for the second slot; one still waiting there moves to the first.
    void SetTexture2(eTexture* texture);

    int m_nCurrentTime;
    int m_nTimeStride;
    eTexture* m_pTexture1;
    eTexture* m_pTexture2;
    eTexture* m_pPendingTexture1;
    eTexture* m_pPendingTexture2;
    int m_nPixelFormat;
};

} // namespace KYR
