#include "ePicture.h"
#include "eFile.h"
#include "eTexture.h"
#include <epoxy/gl.h>

namespace KYR
{

eImageData* ePicture::Load(eString const& path, int bits)
{
    eFileStream stream;
    eByteArray bytes;
    if (!stream.Open(path.Cstr(), 2, 8192))
        return nullptr;
    unsigned char ok = stream.LoadByteArray(bytes);
    stream.Close();
    return ok && bytes.GetSize() ? eFileParserToolkit::LoadImageData(bytes, bits) : nullptr;
}

void ePicture::UploadClampedLinear(eImageData const* image)
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    GLenum format = image->m_nBitsPerPixel == 32   ? GL_RGBA
                    : image->m_nBitsPerPixel == 24 ? GL_RGB
                                                   : GL_ALPHA;
    glTexImage2D(GL_TEXTURE_2D, 0, (GLint)format, image->m_nWidth, image->m_nHeight, 0, format,
                 GL_UNSIGNED_BYTE, image->m_pData);
}

} // namespace KYR
