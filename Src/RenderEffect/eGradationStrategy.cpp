#include "eGradationStrategy.h"

namespace KYR
{

eGradationStrategy::eGradationStrategy()
    : m_nCurrentTime(60), m_nTimeStride(60), m_pTexture1(nullptr), m_pTexture2(nullptr),
      m_pPendingTexture1(nullptr), m_pPendingTexture2(nullptr), m_nPixelFormat(8)
{
}

// The textures belong to the producer and the consuming object.
eGradationStrategy::~eGradationStrategy() {}

float eGradationStrategy::GetTimeRatio()
{
    return (float)m_nCurrentTime / (float)m_nTimeStride;
}

void eGradationStrategy::SetTexture1(eTexture* texture, int pixelFormat)
{
    eTexture* waiting = m_pPendingTexture1;
    m_nPixelFormat = pixelFormat;
    m_pPendingTexture1 = texture;
    if (waiting)
    {
        // The older raster slides over; the one in use in slot 1 is dropped, not freed.
        m_pPendingTexture2 = waiting;
        m_pTexture1 = nullptr;
    }
}

void eGradationStrategy::SetTexture2(eTexture* texture)
{
    eTexture* waiting = m_pPendingTexture2;
    m_pPendingTexture2 = texture;
    if (waiting)
    {
        m_pPendingTexture1 = waiting;
        m_pTexture2 = nullptr;
    }
}

} // namespace KYR
