// Files of the Basic and FileParser libraries: byte arrays, a read stream, the image
// decoder, and the application's work path.
#pragma once
#include "eEnums.h"
#include "eString.h"
#include <cstdio>
#include <vector>

namespace KYR
{

class eImageData;

class eByteArray
{
public:
    eByteArray() {}
    unsigned char* GetData() { return m_arBytes.empty() ? nullptr : m_arBytes.data(); }
    unsigned char const* GetData() const { return m_arBytes.empty() ? nullptr : m_arBytes.data(); }
    int GetSize() const { return (int)m_arBytes.size(); }
    void SetSize(int n) { m_arBytes.resize(n > 0 ? (size_t)n : 0); }
    std::vector<unsigned char>& GetBytes() { return m_arBytes; }

private:
    std::vector<unsigned char> m_arBytes;
};

// A file opened for reading. The library writes no file, so every direction reads; the
// flags give the read buffer size in bytes (0 keeps the default).
class eFileStream
{
public:
    eFileStream() : m_pFile(nullptr) {}
    ~eFileStream() { Close(); }
    eFileStream(eFileStream const&) = delete;
    eFileStream& operator=(eFileStream const&) = delete;

    // 0, with a message on stderr, when the file cannot be opened.
    unsigned char Open(char const* path, eStreamDirection direction, unsigned int flags);
    // The same with the direction as a plain number, as callers often pass it.
    unsigned char Open(char const* path, int direction, unsigned int flags)
    {
        return Open(path, (eStreamDirection)direction, flags);
    }
    unsigned char IsOpen() const { return m_pFile ? 1 : 0; }
    // Reads the whole file into bytes. 0 when the stream is not open or the read fails.
    unsigned char LoadByteArray(eByteArray& bytes);
    void Close();

private:
    std::FILE* m_pFile;
    std::vector<char> m_arBuffer;
    eString m_strPath;
};

class eFileParserToolkit
{
public:
    // Decodes a PNG or JPEG (or any format the decoder knows) into 8 (grey), 24 (RGB) or
    // 32 (RGBA) bits per pixel, converting as needed; row 0 is the top of the picture.
    // Null, with a message on stderr, for other depths or data that does not decode.
    // The caller owns the result.
    static eImageData* LoadImageData(eByteArray const& bytes, int bitsPerPixel);
};

class eSystem
{
public:
    // The application's working folder, always ending in '/': the environment variable
    // KYR_WORK_PATH when set, otherwise the folder given to SetWorkPath, otherwise the
    // work folder beside the host library: <build>/work/ in a build tree, and
    // <prefix>/share/KyrRenderEffect/ once installed.
    static eString GetWorkPath();
    static void SetWorkPath(eString const& path);
};

} // namespace KYR
