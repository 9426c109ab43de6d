// Textures of the material system, and the two pixel containers they upload from.
#pragma once
#include "eEnums.h"
#include "eString.h"

namespace KYR
{

// Decoded picture: rows of m_nPitch bytes, row 0 the top of the picture.
// m_pData is owned and allocated with new[]; the destructor frees it. Code that frees the
// pixels by hand must set m_pData to null before deleting the image.
class eImageData
{
public:
    eImageData();
    ~eImageData();
    eImageData(eImageData const&) = delete;
    eImageData& operator=(eImageData const&) = delete;

    // Replaces the pixels with a zeroed block of w x h at bitsPerPixel (8, 16, 24 or 32);
    // the pitch becomes w * bitsPerPixel / 8. False on a bad size or depth.
    unsigned char Allocate(int w, int h, int bitsPerPixel);
    void Free();

    int m_nWidth;
    int m_nHeight;
    int m_nBitsPerPixel;
    int m_nPitch;
    unsigned char* m_pData;
};

// A raster of one channel: pixel format 8 (unsigned byte), 16 (signed 16-bit),
// 17 (unsigned 16-bit) or 3200 (32-bit float). Rows follow each other without padding.
// When m_bOwnData is set (the default) the destructor frees m_pData, which must then come
// from new[] of a plain type (unsigned char, short, float ...) or from Allocate.
class eTextureInfo
{
public:
    eTextureInfo();
    ~eTextureInfo();
    eTextureInfo(eTextureInfo const&) = delete;
    eTextureInfo& operator=(eTextureInfo const&) = delete;

    // Replaces the pixels with a zeroed block of bytes bytes and records the size.
    void* Allocate(int bytes);
    void Free();
    // Bytes per pixel of a format code; 0 for an unknown code.
    static int BytesPerPixel(int pixelFormat);

    unsigned char m_bOwnData;
    int m_nPixelFormat;
    int m_nWidth;
    int m_nHeight;
    void* m_pData;
    int m_nSize; // bytes
};

class eTextureOperator;

// An OpenGL 2-D texture made from an eImageData or an eTextureInfo.
// Ownership of the picture: with auto release set, the texture owns it and frees it right
// after the upload (and in the destructor if it never went up). With auto release clear,
// the picture stays the caller's and the texture never frees it. Setting a new picture
// never frees the old one.
class eTexture
{
public:
    eTexture();
    virtual ~eTexture();
    eTexture(eTexture const&) = delete;
    eTexture& operator=(eTexture const&) = delete;

    // Uploads the picture once. Returns 1 at once when the texture is resident and no new
    // picture or parameter was set since; re-applies wrap and filter when only those
    // changed. 0 when there is nothing to upload or the picture is unusable.
    virtual unsigned char CreateTexture();
    // Deletes the OpenGL texture; a later CreateTexture uploads again if a picture remains.
    virtual unsigned char DestroyTexture();

    unsigned int GetTextureID() const { return m_nTextureID; }
    void SetTextureWrapS(int mode);
    void SetTextureWrapT(int mode);
    void SetTextureMinFilter(int mode);
    void SetTextureMagFilter(int mode);
    void SetAutoMipMap(unsigned char on) { m_bAutoMipMap = on; }
    unsigned char GetAutoMipMap() const { return m_bAutoMipMap; }
    void SetAutoRelease(unsigned char on) { m_bAutoRelease = on; }
    unsigned char GetAutoRelease() const { return m_bAutoRelease; }

    // Sets the picture to upload at the next CreateTexture. An image takes precedence over
    // a texture info when both are set.
    void SetImageData(eImageData* image);
    eImageData* GetImageData() { return m_pImageData; }
    void SetTextureInfo(eTextureInfo* info);
    eTextureInfo* GetTextureInfo() { return m_pTextureInfo; }

    // Size of the last upload (or of the picture set, before the first upload).
    int GetWidth() const;
    int GetHeight() const;

protected:
    unsigned char Upload();
    void ApplyParameters();
    void ReleasePicture();

    unsigned int m_nTextureID;
    int m_nWrapS;
    int m_nWrapT;
    int m_nMinFilter;
    int m_nMagFilter;
    unsigned char m_bAutoMipMap;
    unsigned char m_bAutoRelease;
    unsigned char m_bOwnPicture; // owned regardless of auto release (textures of eTextureOperator)
    unsigned char m_bDirty;      // a picture waits for upload
    unsigned char m_bParamsDirty;
    unsigned char m_bMipmapped; // the resident texture has its mipmap chain
    int m_nWidth;
    int m_nHeight;
    eImageData* m_pImageData;
    eTextureInfo* m_pTextureInfo;

    friend class eTextureOperator;
};

// Makes textures from files and from memory. The textures keep their picture, so that
// DestroyTexture followed by CreateTexture brings them back; they are not yet uploaded.
class eTextureOperator
{
public:
    static eTextureOperator& GetSingleton();
    // Decodes a PNG or JPEG file into 32-bit RGBA. Null (with a message on stderr) when the
    // file is missing or does not decode.
    eTexture* CreateTexture(eString file, eTextureWrapMode wrap, eTextureFilterMode filter);
    // Copies a one-channel raster of pixel format 8, 16, 17 or 3200. Null on a bad format,
    // size or pointer.
    eTexture* CreateTexture(unsigned char* data, int width, int height, int pixelFormat,
                            eTextureWrapMode wrap, eTextureFilterMode filter);

private:
    eTextureOperator() {}
};

class eTextureManager
{
public:
    static eTextureManager& GetSingleton();
    // A new empty texture, owned by the caller.
    eTexture* CreateTexture();

private:
    eTextureManager() {}
};

} // namespace KYR
