#include "eFile.h"
#include "eDataPaths.h"
#include "eTexture.h"

#include <cctype>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

#include <jpeglib.h>
#include <png.h>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wimplicit-fallthrough"
#endif
// Only the formats resources come in: every other decoder is code a hostile file could reach.
// JPEG and PNG go to libjpeg-turbo and libpng instead (below): on corrupt files this
// decoder's JPEG bit reader shifts past the width of its buffer, and its PNG reader copies
// to a null buffer for an empty first data chunk.
#define STBI_ONLY_BMP
#define STBI_ONLY_PNM
#define STB_IMAGE_IMPLEMENTATION
#include <stb_image.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

namespace KYR
{

// ---------------------------------------------------------------------------------------------
// eFileStream
// ---------------------------------------------------------------------------------------------

unsigned char eFileStream::Open(char const* path, eStreamDirection, unsigned int flags)
{
    Close();
    if (!path || !*path)
    {
        std::fprintf(stderr, "eFileStream: no file name given\n");
        return 0;
    }
    m_pFile = std::fopen(path, "rb");
    if (!m_pFile)
    {
        std::fprintf(stderr, "eFileStream: cannot open '%s': %s\n", path, std::strerror(errno));
        return 0;
    }
    m_strPath = path;
    // The flags are the caller's read buffer size; keep it within reason.
    if (flags >= 512 && flags <= (1u << 24))
    {
        m_arBuffer.resize(flags);
        std::setvbuf(m_pFile, m_arBuffer.data(), _IOFBF, m_arBuffer.size());
    }
    return 1;
}

unsigned char eFileStream::LoadByteArray(eByteArray& bytes)
{
    if (!m_pFile)
    {
        std::fprintf(stderr, "eFileStream: LoadByteArray on a stream that is not open\n");
        return 0;
    }
    if (std::fseek(m_pFile, 0, SEEK_END) != 0)
    {
        std::fprintf(stderr, "eFileStream: cannot seek in '%s'\n", m_strPath.Cstr());
        return 0;
    }
    long size = std::ftell(m_pFile);
    if (size < 0 || size > 0x7FFFFFFFL || std::fseek(m_pFile, 0, SEEK_SET) != 0)
    {
        std::fprintf(stderr, "eFileStream: cannot size '%s'\n", m_strPath.Cstr());
        return 0;
    }
    bytes.SetSize((int)size);
    if (size > 0 && std::fread(bytes.GetData(), 1, (size_t)size, m_pFile) != (size_t)size)
    {
        std::fprintf(stderr, "eFileStream: short read of '%s'\n", m_strPath.Cstr());
        bytes.SetSize(0);
        return 0;
    }
    return 1;
}

void eFileStream::Close()
{
    if (m_pFile)
        std::fclose(m_pFile);
    m_pFile = nullptr;
    m_arBuffer.clear();
}

// ---------------------------------------------------------------------------------------------
// eFileParserToolkit
// ---------------------------------------------------------------------------------------------

namespace
{

// Decoded pictures past these are refused before anything is allocated for them: no
// resource comes near, and a forged header must not make the decoder ask for gigabytes.
int const kMaxPictureSide = 16384;
long long const kMaxPictureBytes = 256LL << 20;

// Whether the three numbers of a PNM header (width, height, largest sample) have at most
// nine digits each; the decoder's reading of longer ones overflows.
bool PnmNumbersFit(unsigned char const* p, int size)
{
    int i = 2; // after "P5" or "P6"
    for (int number = 0; number < 3; ++number)
    {
        // Blanks and comment lines, as the decoder skips them.
        while (i < size && (std::isspace(p[i]) || p[i] == '#'))
        {
            if (p[i] == '#')
                while (i < size && p[i] != '\n' && p[i] != '\r')
                    ++i;
            else
                ++i;
        }
        int digits = 0;
        while (i < size && p[i] >= '0' && p[i] <= '9')
        {
            ++digits;
            ++i;
        }
        if (digits > 9)
            return false;
    }
    return true;
}

// Refuses, with a message, sizes past the limits above (and sizes of nothing).
bool PictureSizeFits(long long w, long long h)
{
    if (w > 0 && h > 0 && w <= kMaxPictureSide && h <= kMaxPictureSide &&
        w * h * 4 <= kMaxPictureBytes)
        return true;
    std::fprintf(stderr,
                 "eFileParserToolkit: refusing a %lld x %lld picture: more than %d pixels a "
                 "side or %lld MiB decoded\n",
                 w, h, kMaxPictureSide, kMaxPictureBytes >> 20);
    return false;
}

// libjpeg reports a fatal error through error_exit, which must not return: it jumps back
// to the decoding function with the library's message.
struct JpegFailure
{
    jpeg_error_mgr m_Manager;
    std::jmp_buf m_Jump;
    char m_szMessage[JMSG_LENGTH_MAX];
};

[[noreturn]] void JpegExit(j_common_ptr info)
{
    JpegFailure* failure = reinterpret_cast<JpegFailure*>(info->err);
    (*info->err->format_message)(info, failure->m_szMessage);
    std::longjmp(failure->m_Jump, 1);
}

// Corrupt or truncated entropy data only warns: the decoder fills in what is missing and
// goes on, as picture viewers do.
void JpegWarning(j_common_ptr, int) {}

// Each scan of a progressive picture is a pass over the whole coefficient store; real
// encoders write about ten, and a forged file of thousands only burns time.
int const kMaxJpegScans = 100;

void JpegProgress(j_common_ptr info)
{
    j_decompress_ptr decompress = reinterpret_cast<j_decompress_ptr>(info);
    if (decompress->input_scan_number <= kMaxJpegScans)
        return;
    JpegFailure* failure = reinterpret_cast<JpegFailure*>(info->err);
    std::snprintf(failure->m_szMessage, sizeof failure->m_szMessage,
                  "more than %d progressive scans", kMaxJpegScans);
    std::longjmp(failure->m_Jump, 1);
}

// Decodes a JPEG to `channels` bytes a pixel (grey, RGB, or RGBA with opaque alpha) into a
// buffer from malloc. Gives null when it cannot: `why` holds the reason, or stays empty
// where the size was refused (already said).
unsigned char* DecodeJpeg(unsigned char const* data, int size, int channels, int& w, int& h,
                          std::string& why)
{
    jpeg_decompress_struct info;
    JpegFailure failure;
    jpeg_progress_mgr progress;
    unsigned char* volatile pixels = nullptr;
    failure.m_szMessage[0] = 0;
    info.err = jpeg_std_error(&failure.m_Manager);
    failure.m_Manager.error_exit = JpegExit;
    failure.m_Manager.emit_message = JpegWarning;
    if (setjmp(failure.m_Jump))
    {
        jpeg_destroy_decompress(&info);
        std::free(pixels);
        why = failure.m_szMessage;
        return nullptr;
    }
    jpeg_create_decompress(&info);
    // Anything the decoder would keep beyond this (whole-picture coefficient stores of a
    // forged progressive file) fails instead of spilling to a backing store it lacks.
    info.mem->max_memory_to_use = 512L << 20;
    progress.progress_monitor = JpegProgress;
    info.progress = &progress;
    jpeg_mem_src(&info, data, (unsigned long)size);
    jpeg_read_header(&info, TRUE);
    if (!PictureSizeFits(info.image_width, info.image_height))
    {
        jpeg_destroy_decompress(&info);
        return nullptr;
    }
    info.out_color_space = channels == 1 ? JCS_GRAYSCALE : channels == 3 ? JCS_RGB : JCS_EXT_RGBA;
    jpeg_start_decompress(&info);
    w = (int)info.output_width;
    h = (int)info.output_height;
    size_t const pitch = (size_t)w * (size_t)channels;
    pixels = static_cast<unsigned char*>(std::malloc(pitch * (size_t)h));
    if (!pixels || info.output_components != channels)
    {
        jpeg_destroy_decompress(&info);
        std::free(pixels);
        why = pixels ? "unexpected output components" : "out of memory";
        return nullptr;
    }
    while (info.output_scanline < info.output_height)
    {
        JSAMPROW row = pixels + pitch * info.output_scanline;
        if (jpeg_read_scanlines(&info, &row, 1) != 1)
            break;
    }
    bool const complete = info.output_scanline == info.output_height;
    if (complete)
        jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    if (!complete)
    {
        std::free(pixels);
        why = "the decoder stopped before the last row";
        return nullptr;
    }
    return pixels;
}

// libpng, like libjpeg, reports a fatal error through a handler that jumps back to the
// decoding function; the message is kept for the caller.
struct PngFailure
{
    char m_szMessage[256];
};

[[noreturn]] void PngError(png_structp png, png_const_charp message)
{
    PngFailure* failure = static_cast<PngFailure*>(png_get_error_ptr(png));
    std::snprintf(failure->m_szMessage, sizeof failure->m_szMessage, "%s", message);
    png_longjmp(png, 1);
}

void PngWarning(png_structp, png_const_charp) {}

struct PngSource
{
    unsigned char const* m_pData;
    size_t m_nSize;
    size_t m_nAt;
};

void PngRead(png_structp png, png_bytep out, size_t length)
{
    PngSource* source = static_cast<PngSource*>(png_get_io_ptr(png));
    if (length > source->m_nSize - source->m_nAt)
        png_error(png, "the data ends inside a chunk");
    std::memcpy(out, source->m_pData + source->m_nAt, length);
    source->m_nAt += length;
}

// Turns rows of RGBA into `channels` bytes a pixel in place: 4 as they are, 3 without the
// alpha, 1 as the luma (77 R + 150 G + 29 B) / 256, which keeps a grey picture's values.
void RgbaToChannels(unsigned char* pixels, size_t count, int channels)
{
    if (channels == 4)
        return;
    unsigned char* out = pixels;
    for (size_t i = 0; i < count; ++i)
    {
        unsigned char const* p = pixels + 4 * i;
        if (channels == 3)
        {
            out[0] = p[0];
            out[1] = p[1];
            out[2] = p[2];
            out += 3;
        }
        else
            *out++ = (unsigned char)((p[0] * 77 + p[1] * 150 + p[2] * 29) >> 8);
    }
}

// Decodes a PNG to `channels` bytes a pixel into a buffer from malloc: samples of 16 bits
// keep their high byte, palettes and transparency keys are expanded, grey is repeated into
// colour, and a missing alpha is opaque. Checksums are not enforced. Gives null when it
// cannot: `why` holds the reason, or stays empty where the size was refused (already said).
unsigned char* DecodePng(unsigned char const* data, int size, int channels, int& w, int& h,
                         std::string& why)
{
    PngFailure failure;
    failure.m_szMessage[0] = 0;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &failure, PngError, PngWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info)
    {
        png_destroy_read_struct(&png, nullptr, nullptr);
        why = "out of memory";
        return nullptr;
    }
    PngSource source = {data, (size_t)size, 0};
    unsigned char* volatile pixels = nullptr;
    png_bytep* volatile rows = nullptr;
    if (setjmp(png_jmpbuf(png)))
    {
        png_destroy_read_struct(&png, &info, nullptr);
        std::free(pixels);
        std::free(rows);
        why = failure.m_szMessage;
        return nullptr;
    }
    png_set_read_fn(png, &source, PngRead);
    png_set_crc_action(png, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
    png_set_user_limits(png, kMaxPictureSide, kMaxPictureSide);
    png_read_info(png, info);
    png_uint_32 const width = png_get_image_width(png, info);
    png_uint_32 const height = png_get_image_height(png, info);
    if (!PictureSizeFits(width, height))
    {
        png_destroy_read_struct(&png, &info, nullptr);
        return nullptr;
    }
    png_set_strip_16(png);
    png_set_packing(png);
    png_set_expand(png);
    if (!(png_get_color_type(png, info) & PNG_COLOR_MASK_COLOR))
        png_set_gray_to_rgb(png);
    png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    size_t const pitch = (size_t)width * 4;
    if (png_get_rowbytes(png, info) != pitch)
        png_error(png, "unexpected row layout");
    pixels = static_cast<unsigned char*>(std::malloc(pitch * height));
    rows = static_cast<png_bytep*>(std::malloc(sizeof(png_bytep) * height));
    if (!pixels || !rows)
        png_error(png, "out of memory");
    for (png_uint_32 y = 0; y < height; ++y)
        rows[y] = pixels + pitch * y;
    // What follows the last data chunk is not read: the picture is whole without it.
    png_read_image(png, rows);
    png_destroy_read_struct(&png, &info, nullptr);
    std::free(rows);
    w = (int)width;
    h = (int)height;
    RgbaToChannels(pixels, (size_t)width * height, channels);
    return pixels;
}

} // namespace

eImageData* eFileParserToolkit::LoadImageData(eByteArray const& bytes, int bitsPerPixel)
{
    if (bitsPerPixel != 8 && bitsPerPixel != 24 && bitsPerPixel != 32)
    {
        std::fprintf(stderr, "eFileParserToolkit: cannot decode to %d bits per pixel\n",
                     bitsPerPixel);
        return nullptr;
    }
    if (bytes.GetSize() <= 0)
    {
        std::fprintf(stderr, "eFileParserToolkit: no image data\n");
        return nullptr;
    }
    int channels = bitsPerPixel / 8;
    int w = 0, h = 0, fileChannels = 0;
    unsigned char const* data = bytes.GetData();
    int const size = bytes.GetSize();
    bool const pnm = size >= 2 && data[0] == 'P' && (data[1] == '5' || data[1] == '6');
    if (pnm && !PnmNumbersFit(data, size))
    {
        std::fprintf(stderr, "eFileParserToolkit: image does not decode: a PNM header number "
                             "is too long\n");
        return nullptr;
    }
    unsigned char* pixels = nullptr;
    bool const jpeg = size >= 2 && data[0] == 0xFF && data[1] == 0xD8;
    if (jpeg || (size >= 8 && png_sig_cmp(data, 0, 8) == 0))
    {
        std::string why;
        pixels = jpeg ? DecodeJpeg(data, size, channels, w, h, why)
                      : DecodePng(data, size, channels, w, h, why);
        if (!pixels)
        {
            if (!why.empty())
                std::fprintf(stderr, "eFileParserToolkit: image does not decode: %s\n",
                             why.c_str());
            return nullptr;
        }
    }
    else
    {
        if (!stbi_info_from_memory(data, size, &w, &h, &fileChannels))
        {
            std::fprintf(stderr, "eFileParserToolkit: image does not decode: %s\n",
                         stbi_failure_reason() ? stbi_failure_reason() : "unknown reason");
            return nullptr;
        }
        if (!PictureSizeFits(w, h))
            return nullptr;
        // The decoder mishandles 16-bit PNM samples when it changes the channel count.
        if (pnm && stbi_is_16_bit_from_memory(data, size))
        {
            std::fprintf(stderr, "eFileParserToolkit: 16-bit PNM pictures are not supported\n");
            return nullptr;
        }
        w = h = fileChannels = 0;
        pixels = stbi_load_from_memory(data, size, &w, &h, &fileChannels, channels);
        if (!pixels)
        {
            std::fprintf(stderr, "eFileParserToolkit: image does not decode: %s\n",
                         stbi_failure_reason() ? stbi_failure_reason() : "unknown reason");
            return nullptr;
        }
    }
    // Both decoders' buffers come from malloc.
    eImageData* image = new eImageData();
    if (!image->Allocate(w, h, bitsPerPixel))
    {
        std::free(pixels);
        delete image;
        return nullptr;
    }
    std::memcpy(image->m_pData, pixels, (size_t)w * (size_t)h * (size_t)channels);
    std::free(pixels);
    return image;
}

// ---------------------------------------------------------------------------------------------
// eSystem
// ---------------------------------------------------------------------------------------------

namespace
{

std::mutex s_workPathMutex;
std::string s_strWorkPath;

std::string WithSlash(std::string path)
{
    if (path.empty() || path.back() != '/')
        path += '/';
    return path;
}

} // namespace

eString eSystem::GetWorkPath()
{
    // The application's own choice (e.g. the gallery's --work-path) comes first, then
    // the environment, then the work folder beside the host library (eDataPaths.h).
    {
        std::lock_guard<std::mutex> lock(s_workPathMutex);
        if (!s_strWorkPath.empty())
            return eString(s_strWorkPath);
    }
    char const* env = std::getenv("KYR_WORK_PATH");
    if (env && *env)
        return eString(WithSlash(env));
    return eString(Host::DefaultWorkPath());
}

void eSystem::SetWorkPath(eString const& path)
{
    std::lock_guard<std::mutex> lock(s_workPathMutex);
    s_strWorkPath = path.IsEmpty() ? std::string() : WithSlash(path.Str());
}

} // namespace KYR
