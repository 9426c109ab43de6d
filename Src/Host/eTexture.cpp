#include "eTexture.h"
#include "eFile.h"
#include "eGLContext.h"
#include "eGLCurrent.h"

#include <epoxy/gl.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

namespace KYR
{

namespace
{

bool NeedsMipmaps(int minFilter)
{
    return minFilter == GL_NEAREST_MIPMAP_NEAREST || minFilter == GL_LINEAR_MIPMAP_NEAREST ||
           minFilter == GL_NEAREST_MIPMAP_LINEAR || minFilter == GL_LINEAR_MIPMAP_LINEAR;
}

// Binds a texture on the active unit (without recording it as an effect's bind) and puts
// the previous one back, together with the unpack state that uploads change.
class eUploadState
{
public:
    explicit eUploadState(GLuint texture)
    {
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &m_nTexture);
        glGetIntegerv(GL_PIXEL_UNPACK_BUFFER_BINDING, &m_nUnpackBuffer);
        glGetIntegerv(GL_UNPACK_ALIGNMENT, &m_nAlignment);
        glGetIntegerv(GL_UNPACK_ROW_LENGTH, &m_nRowLength);
        glGetIntegerv(GL_UNPACK_SKIP_ROWS, &m_nSkipRows);
        glGetIntegerv(GL_UNPACK_SKIP_PIXELS, &m_nSkipPixels);
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
        glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
        glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
        Host::eDirectCallMute mute;
        glBindTexture(GL_TEXTURE_2D, texture);
    }
    ~eUploadState()
    {
        glPixelStorei(GL_UNPACK_ALIGNMENT, m_nAlignment);
        glPixelStorei(GL_UNPACK_ROW_LENGTH, m_nRowLength);
        glPixelStorei(GL_UNPACK_SKIP_ROWS, m_nSkipRows);
        glPixelStorei(GL_UNPACK_SKIP_PIXELS, m_nSkipPixels);
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, (GLuint)m_nUnpackBuffer);
        Host::eDirectCallMute mute;
        glBindTexture(GL_TEXTURE_2D, (GLuint)m_nTexture);
    }

private:
    GLint m_nTexture = 0, m_nUnpackBuffer = 0, m_nAlignment = 4, m_nRowLength = 0;
    GLint m_nSkipRows = 0, m_nSkipPixels = 0;
};

struct eUploadFormat
{
    GLint nInternal;
    GLenum eFormat;
    GLenum eType;
    int nBytesPerPixel;
};

bool ImageFormat(int bitsPerPixel, eUploadFormat& f)
{
    switch (bitsPerPixel)
    {
    case 8:
        f = {GL_LUMINANCE8, GL_LUMINANCE, GL_UNSIGNED_BYTE, 1};
        return true;
    case 16:
        f = {GL_LUMINANCE8_ALPHA8, GL_LUMINANCE_ALPHA, GL_UNSIGNED_BYTE, 2};
        return true;
    case 24:
        f = {GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE, 3};
        return true;
    case 32:
        f = {GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, 4};
        return true;
    default:
        return false;
    }
}

// Signed 16-bit goes into a float texture: the values are normalised to -1..1 and keep
// their sign, which a fixed-point luminance texture would clamp away.
bool RasterFormat(int pixelFormat, eUploadFormat& f)
{
    switch (pixelFormat)
    {
    case ePF_UBYTE:
        f = {GL_LUMINANCE8, GL_LUMINANCE, GL_UNSIGNED_BYTE, 1};
        return true;
    case ePF_SHORT:
        f = {GL_LUMINANCE32F_ARB, GL_LUMINANCE, GL_SHORT, 2};
        return true;
    case ePF_USHORT:
        f = {GL_LUMINANCE16, GL_LUMINANCE, GL_UNSIGNED_SHORT, 2};
        return true;
    case ePF_FLOAT:
        f = {GL_LUMINANCE32F_ARB, GL_LUMINANCE, GL_FLOAT, 4};
        return true;
    default:
        return false;
    }
}

} // namespace

// ---------------------------------------------------------------------------------------------
// eImageData, eTextureInfo
// ---------------------------------------------------------------------------------------------

eImageData::eImageData()
    : m_nWidth(0), m_nHeight(0), m_nBitsPerPixel(0), m_nPitch(0), m_pData(nullptr)
{
}

eImageData::~eImageData()
{
    Free();
}

unsigned char eImageData::Allocate(int w, int h, int bitsPerPixel)
{
    if (w <= 0 || h <= 0 || bitsPerPixel <= 0 || bitsPerPixel > 32 || bitsPerPixel % 8 != 0 ||
        (long long)w * h * (bitsPerPixel / 8) > 0x7FFFFFFFLL)
    {
        std::fprintf(stderr, "eImageData: bad size %d x %d at %d bits\n", w, h, bitsPerPixel);
        return 0;
    }
    Free();
    size_t bytes = (size_t)w * (size_t)h * (size_t)(bitsPerPixel / 8);
    m_pData = new (std::nothrow) unsigned char[bytes]();
    if (!m_pData)
    {
        std::fprintf(stderr, "eImageData: out of memory for %zu bytes\n", bytes);
        return 0;
    }
    m_nWidth = w;
    m_nHeight = h;
    m_nBitsPerPixel = bitsPerPixel;
    m_nPitch = w * (bitsPerPixel / 8);
    return 1;
}

void eImageData::Free()
{
    delete[] m_pData;
    m_pData = nullptr;
}

eTextureInfo::eTextureInfo()
    : m_bOwnData(1), m_nPixelFormat(0), m_nWidth(0), m_nHeight(0), m_pData(nullptr), m_nSize(0)
{
}

eTextureInfo::~eTextureInfo()
{
    if (m_bOwnData)
        Free();
}

void* eTextureInfo::Allocate(int bytes)
{
    Free();
    if (bytes <= 0)
        return nullptr;
    m_pData = new (std::nothrow) unsigned char[(size_t)bytes]();
    m_nSize = m_pData ? bytes : 0;
    return m_pData;
}

// The pixels may come from new[] of any plain type; such arrays carry no size cookie,
// so releasing the raw block matches every one of them.
void eTextureInfo::Free()
{
    if (m_pData)
        ::operator delete[](m_pData);
    m_pData = nullptr;
    m_nSize = 0;
}

int eTextureInfo::BytesPerPixel(int pixelFormat)
{
    eUploadFormat f;
    return RasterFormat(pixelFormat, f) ? f.nBytesPerPixel : 0;
}

// ---------------------------------------------------------------------------------------------
// eTexture
// ---------------------------------------------------------------------------------------------

eTexture::eTexture()
    : m_nTextureID(0), m_nWrapS(GL_REPEAT), m_nWrapT(GL_REPEAT), m_nMinFilter(GL_LINEAR),
      m_nMagFilter(GL_LINEAR), m_bAutoMipMap(0), m_bAutoRelease(0), m_bOwnPicture(0), m_bDirty(0),
      m_bParamsDirty(1), m_bMipmapped(0), m_nWidth(0), m_nHeight(0), m_pImageData(nullptr),
      m_pTextureInfo(nullptr)
{
}

eTexture::~eTexture()
{
    eTexture::DestroyTexture();
    if (m_bAutoRelease || m_bOwnPicture)
        ReleasePicture();
}

void eTexture::SetTextureWrapS(int mode)
{
    m_nWrapS = mode;
    m_bParamsDirty = 1;
}

void eTexture::SetTextureWrapT(int mode)
{
    m_nWrapT = mode;
    m_bParamsDirty = 1;
}

void eTexture::SetTextureMinFilter(int mode)
{
    m_nMinFilter = mode;
    m_bParamsDirty = 1;
}

void eTexture::SetTextureMagFilter(int mode)
{
    m_nMagFilter = mode;
    m_bParamsDirty = 1;
}

void eTexture::SetImageData(eImageData* image)
{
    m_pImageData = image;
    if (image)
        m_bDirty = 1;
}

void eTexture::SetTextureInfo(eTextureInfo* info)
{
    m_pTextureInfo = info;
    if (info)
        m_bDirty = 1;
}

int eTexture::GetWidth() const
{
    if (m_nTextureID && !m_bDirty)
        return m_nWidth;
    if (m_pImageData)
        return m_pImageData->m_nWidth;
    return m_pTextureInfo ? m_pTextureInfo->m_nWidth : m_nWidth;
}

int eTexture::GetHeight() const
{
    if (m_nTextureID && !m_bDirty)
        return m_nHeight;
    if (m_pImageData)
        return m_pImageData->m_nHeight;
    return m_pTextureInfo ? m_pTextureInfo->m_nHeight : m_nHeight;
}

void eTexture::ReleasePicture()
{
    delete m_pImageData;
    m_pImageData = nullptr;
    delete m_pTextureInfo;
    m_pTextureInfo = nullptr;
}

// Expects the texture bound on the active unit.
void eTexture::ApplyParameters()
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, m_nWrapS);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, m_nWrapT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, m_nMinFilter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, m_nMagFilter);
    // A mipmap filter on a texture without its chain would leave it incomplete (black).
    if (NeedsMipmaps(m_nMinFilter) && !m_bMipmapped)
    {
        glGenerateMipmap(GL_TEXTURE_2D);
        m_bMipmapped = 1;
    }
    m_bParamsDirty = 0;
}

unsigned char eTexture::CreateTexture()
{
    bool picture =
        (m_pImageData && m_pImageData->m_pData) || (m_pTextureInfo && m_pTextureInfo->m_pData);
    if (m_nTextureID && (!m_bDirty || !picture))
    {
        if (m_bParamsDirty && Host::HasCurrentGLContext())
        {
            eUploadState state(m_nTextureID);
            ApplyParameters();
        }
        return 1;
    }
    if (!picture)
        return 0;
    return Upload();
}

unsigned char eTexture::Upload()
{
    if (!Host::HasCurrentGLContext())
    {
        std::fprintf(stderr, "eTexture: no OpenGL context is current\n");
        return 0;
    }
    eUploadFormat f;
    int w = 0, h = 0;
    void const* pixels = nullptr;
    std::vector<unsigned char> packed;
    if (m_pImageData && m_pImageData->m_pData)
    {
        eImageData const& img = *m_pImageData;
        if (!ImageFormat(img.m_nBitsPerPixel, f))
        {
            std::fprintf(stderr, "eTexture: unsupported image depth %d bits\n",
                         img.m_nBitsPerPixel);
            return 0;
        }
        w = img.m_nWidth;
        h = img.m_nHeight;
        int row = w * f.nBytesPerPixel;
        if (w <= 0 || h <= 0 || img.m_nPitch < row)
        {
            std::fprintf(stderr, "eTexture: bad image %d x %d, pitch %d\n", w, h, img.m_nPitch);
            return 0;
        }
        pixels = img.m_pData;
        if (img.m_nPitch != row)
        {
            // Rows with padding: pack them tight rather than rely on unpack state.
            packed.resize((size_t)row * (size_t)h);
            for (int y = 0; y < h; ++y)
                std::memcpy(packed.data() + (size_t)y * row,
                            img.m_pData + (size_t)y * (size_t)img.m_nPitch, (size_t)row);
            pixels = packed.data();
        }
    }
    else
    {
        eTextureInfo const& info = *m_pTextureInfo;
        if (!RasterFormat(info.m_nPixelFormat, f))
        {
            std::fprintf(stderr, "eTexture: unsupported pixel format %d\n", info.m_nPixelFormat);
            return 0;
        }
        w = info.m_nWidth;
        h = info.m_nHeight;
        long long need = (long long)w * h * f.nBytesPerPixel;
        if (w <= 0 || h <= 0 || (info.m_nSize > 0 && info.m_nSize < need))
        {
            std::fprintf(stderr, "eTexture: bad raster %d x %d with %d bytes\n", w, h,
                         info.m_nSize);
            return 0;
        }
        pixels = info.m_pData;
    }

    bool created = false;
    if (!m_nTextureID)
    {
        GLuint id = 0;
        glGenTextures(1, &id);
        if (!id)
        {
            std::fprintf(stderr, "eTexture: glGenTextures failed\n");
            return 0;
        }
        m_nTextureID = id;
        created = true;
    }
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i)
    {
    }
    {
        eUploadState state(m_nTextureID);
        glTexImage2D(GL_TEXTURE_2D, 0, f.nInternal, w, h, 0, f.eFormat, f.eType, pixels);
        GLenum err = glGetError();
        if (err != GL_NO_ERROR)
        {
            std::fprintf(stderr, "eTexture: glTexImage2D of %d x %d failed (0x%04X)\n", w, h, err);
            if (created)
            {
                GLuint id = m_nTextureID;
                glDeleteTextures(1, &id);
                m_nTextureID = 0;
            }
            return 0;
        }
        m_bMipmapped = 0;
        if (m_bAutoMipMap)
        {
            glGenerateMipmap(GL_TEXTURE_2D);
            m_bMipmapped = 1;
        }
        ApplyParameters();
    }
    m_nWidth = w;
    m_nHeight = h;
    m_bDirty = 0;
    if (m_bAutoRelease)
        ReleasePicture();
    return 1;
}

unsigned char eTexture::DestroyTexture()
{
    if (m_nTextureID && Host::HasCurrentGLContext())
    {
        GLuint id = m_nTextureID;
        glDeleteTextures(1, &id);
    }
    m_nTextureID = 0;
    m_bMipmapped = 0;
    m_bParamsDirty = 1;
    m_bDirty = 1; // a picture that remains goes up again at the next CreateTexture
    return 1;
}

// ---------------------------------------------------------------------------------------------
// eTextureOperator, eTextureManager
// ---------------------------------------------------------------------------------------------

eTextureOperator& eTextureOperator::GetSingleton()
{
    static eTextureOperator s_operator;
    return s_operator;
}

namespace
{

eTexture* MakeOwningTexture(eTextureWrapMode wrap, eTextureFilterMode filter)
{
    eTexture* t = new eTexture();
    t->SetTextureWrapS(wrap);
    t->SetTextureWrapT(wrap);
    t->SetTextureMinFilter(filter);
    // Magnification knows no mipmaps.
    t->SetTextureMagFilter(NeedsMipmaps(filter) ? GL_LINEAR : (int)filter);
    t->SetAutoMipMap(NeedsMipmaps(filter) ? 1 : 0);
    return t;
}

} // namespace

eTexture* eTextureOperator::CreateTexture(eString file, eTextureWrapMode wrap,
                                          eTextureFilterMode filter)
{
    eFileStream stream;
    if (!stream.Open(file.Cstr(), eSD_READ, 0x2000))
        return nullptr;
    eByteArray bytes;
    unsigned char read = stream.LoadByteArray(bytes);
    stream.Close();
    if (!read)
        return nullptr;
    eImageData* image = eFileParserToolkit::LoadImageData(bytes, 32);
    if (!image)
    {
        std::fprintf(stderr, "eTextureOperator: '%s' is not a picture I can read\n", file.Cstr());
        return nullptr;
    }
    eTexture* t = MakeOwningTexture(wrap, filter);
    t->SetImageData(image);
    t->m_bOwnPicture = 1;
    return t;
}

eTexture* eTextureOperator::CreateTexture(unsigned char* data, int width, int height,
                                          int pixelFormat, eTextureWrapMode wrap,
                                          eTextureFilterMode filter)
{
    int bytesPerPixel = eTextureInfo::BytesPerPixel(pixelFormat);
    if (!data || width <= 0 || height <= 0 || bytesPerPixel == 0 ||
        (long long)width * height * bytesPerPixel > 0x7FFFFFFFLL)
    {
        std::fprintf(stderr,
                     "eTextureOperator: cannot make a texture of %d x %d in pixel format %d%s\n",
                     width, height, pixelFormat, data ? "" : " from no data");
        return nullptr;
    }
    int bytes = width * height * bytesPerPixel;
    eTextureInfo* info = new eTextureInfo();
    void* copy = info->Allocate(bytes);
    if (!copy)
    {
        delete info;
        std::fprintf(stderr, "eTextureOperator: out of memory for %d bytes\n", bytes);
        return nullptr;
    }
    std::memcpy(copy, data, (size_t)bytes);
    info->m_nPixelFormat = pixelFormat;
    info->m_nWidth = width;
    info->m_nHeight = height;
    eTexture* t = MakeOwningTexture(wrap, filter);
    t->SetTextureInfo(info);
    t->m_bOwnPicture = 1;
    return t;
}

eTextureManager& eTextureManager::GetSingleton()
{
    static eTextureManager s_manager;
    return s_manager;
}

eTexture* eTextureManager::CreateTexture()
{
    return new eTexture();
}

} // namespace KYR
