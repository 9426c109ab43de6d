#include "eFile.h"
#include "eDataPaths.h"
#include "eTexture.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wimplicit-fallthrough"
#endif
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
    stbi_uc* pixels =
        stbi_load_from_memory(bytes.GetData(), bytes.GetSize(), &w, &h, &fileChannels, channels);
    if (!pixels)
    {
        std::fprintf(stderr, "eFileParserToolkit: image does not decode: %s\n",
                     stbi_failure_reason() ? stbi_failure_reason() : "unknown reason");
        return nullptr;
    }
    eImageData* image = new eImageData();
    if (!image->Allocate(w, h, bitsPerPixel))
    {
        stbi_image_free(pixels);
        delete image;
        return nullptr;
    }
    std::memcpy(image->m_pData, pixels, (size_t)w * (size_t)h * (size_t)channels);
    stbi_image_free(pixels);
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
