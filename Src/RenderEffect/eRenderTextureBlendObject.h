// Rasters laid over the Earth on consecutive texture units, with a blend strength and a
// mask texture shared by the whole family of tile objects.
#pragma once
#include "eRect.h"
#include "eRenderObject.h"
#include <vector>

namespace KYR
{

class eGradationStrategy;
class eMutex;
class eRenderProgram;

class eRenderTextureBlendObject : public eRenderObject
{
public:
    eRenderTextureBlendObject();
    // Copies share the textures of the list (the last holder frees each); each copy counts
    // as a living object of the family.
    eRenderTextureBlendObject(eRenderTextureBlendObject const& other);
    eRenderTextureBlendObject& operator=(eRenderTextureBlendObject const&) = default;
    ~eRenderTextureBlendObject() override;

    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;

    // Copies a one-channel raster (format 8, 16, 17 or 3200) into a new texture and appends
    // it, also when the copy failed and the result is null.
    void AddTexture(unsigned char* data, int width, int height, int format);
    // Replaces the mask of the whole family.
    void SetMaskTexture(eString path);
    void SetTextureTrans(int percent) { m_nTextureTrans = percent; }
    void SetIsMask(unsigned char on) { m_bIsMask = on; }
    void SetMaskTextureBound(eRect2D const& bound) { m_rcMaskTextureBound = bound; }

protected:
    // The textures the gradation objects took over from their strategy, one holder a slot,
    // shared by an object's copies together with the strategy and its lock (all under that
    // lock). The strategy frees nothing: a texture it handed over is freed by these holders
    // once it has left the strategy and the texture lists of all copies.
    struct eGradationTextures
    {
        eShared<eTexture> m_Slot[2];
    };

    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    // The program of pass 0 of the best technique, or null.
    eRenderProgram* FetchProgram(eRenderEngine* engine);
    // Selects unit GL_TEXTURE0 + unit, uploads the texture if needed and binds it (or
    // nothing for null): how the rasters go on their units.
    static void BindOnUnit(eTexture* texture, size_t unit);
    // Uploads first, then selects the unit and binds: how the table and the mask go on.
    static void UploadAndBind(eTexture* texture, size_t unit);
    // Takes the strategy's pending textures under the lock, retiring those they replace, and
    // makes the texture list a view of the strategy's current pair.
    void TakeGradationTextures(eGradationStrategy* strategy, eMutex& mutex,
                               eGradationTextures& taken);
    // Frees a texture taken out of use, with its picture unless the texture releases it.
    static void RetireTexture(eTexture* texture);
    static void TakePending(eTexture*& pending, eTexture*& current);
    // Makes slot hold current: the holder it has, the other slot's, or a new one.
    static void HoldCurrent(eTexture* current, eShared<eTexture>& slot,
                            eShared<eTexture> const& other);

    int m_nPixelFormat;
    std::vector<eShared<eTexture>> m_arTextures;
    int m_nTextureTrans;
    unsigned char m_bIsMask;
    eRect2D m_rcMaskTextureBound;
    static eShared<eTexture> s_pMaskTexture;
    static int s_refCount;
};

// Left, top, width and height of a rectangle, as programs receive it.
inline void RectToFloats(eRect2D const& rc, float out[4])
{
    out[0] = (float)rc.left;
    out[1] = (float)rc.top;
    out[2] = (float)rc.Width();
    out[3] = (float)rc.Height();
}

} // namespace KYR
