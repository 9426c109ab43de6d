#include "eRenderPicturePart.h"
#include "eMesh.h"
#include "eRenderEngine.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <epoxy/gl.h>

namespace KYR
{

eRenderPicturePart::eRenderPicturePart()
    : m_cColor(255, 255, 255, 0), m_nTextureID(-1), m_pTexture(nullptr)
{
}

eRenderPicturePart::~eRenderPicturePart() {}

eRenderable::Type eRenderPicturePart::GetType()
{
    return eRT_PICTURE_PART;
}

eRect2D eRenderPicturePart::GetBounds()
{
    return m_rcBound;
}

void eRenderPicturePart::SetBound(eRect2D const& bound)
{
    m_rcBound = bound;
    m_bDirty = 1;
}

void eRenderPicturePart::SetTextureID(int id)
{
    if (id == m_nTextureID)
        return;
    m_nTextureID = id;
    m_pTexture = nullptr;
}

void eRenderPicturePart::CreateBuffer(eRenderEngine* engine)
{
    NewStores();
    eCoordSys* coordSys = engine ? engine->GetCoordSys() : nullptr;
    eVector4T<unsigned char> const none(0, 0, 0, 0);
    // A strip over the corners; texture row 0 (the picture's top) at the top edge.
    AddVertex(coordSys, m_rcBound.left, m_rcBound.top, 0.0f, 0.0f, none);
    AddVertex(coordSys, m_rcBound.right, m_rcBound.top, 1.0f, 0.0f, none);
    AddVertex(coordSys, m_rcBound.left, m_rcBound.bottom, 0.0f, 1.0f, none);
    AddVertex(coordSys, m_rcBound.right, m_rcBound.bottom, 1.0f, 1.0f, none);
    for (unsigned short i = 0; i < 4; ++i)
        m_pIndexData->AddIndex(i);
    UploadStores();
}

void eRenderPicturePart::DestroyBuffer()
{
    eRenderPart::DestroyBuffer();
    m_bDirty = 0;
}

unsigned char eRenderPicturePart::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera*,
                                         eViewport*)
{
    if (!BeginDraw(engine, m_cColor))
        return 0;
    if (!m_pTexture)
    {
        m_pTexture = engine->GetTexture(((unsigned int)m_nTextureID << 8) | 1u);
        if (!m_pTexture)
            m_pTexture = engine->GetDefaultTexture();
    }
    // Bound on the frame it was found too, so that no texture of an earlier part shows.
    glBindTexture(GL_TEXTURE_2D, m_pTexture ? m_pTexture->GetTextureID() : 0);
    rs->DrawIndexed(eOT_TRIANGLE_STRIP, m_pVertexData, m_pIndexData, false);
    return 1;
}

} // namespace KYR
