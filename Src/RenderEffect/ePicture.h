// Pictures below the work path as the effects read them: the file decoded to the asked
// bit depth, and the upload into the bound 2-D texture that several effects share.
#pragma once
#include "eString.h"

namespace KYR
{

class eImageData;

class ePicture
{
public:
    // The decoded picture (owned by the caller), or null when the file cannot be read
    // or decoded.
    static eImageData* Load(eString const& path, int bits);
    // Uploads into the texture bound on GL_TEXTURE_2D: clamp in both directions, linear
    // filters, RGBA for 32 bits, RGB for 24, alpha otherwise.
    static void UploadClampedLinear(eImageData const* image);
};

} // namespace KYR
