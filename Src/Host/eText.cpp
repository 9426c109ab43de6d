// Glyphs of the host: fonts found through fontconfig, rasterised by FreeType into cells of
// the line's height, uploaded as single-channel textures, and cached for the process.
#include "eText.h"
#include "eGLContext.h"
#include <epoxy/gl.h>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <sys/stat.h>
#include <tuple>

namespace KYR
{

namespace
{

char const* const kDefaultFamily = "DejaVu Sans";
char const* const kDejaVuFolder = "/usr/share/fonts/truetype/dejavu/";
int const kBold = 1, kItalic = 2;

bool IsFile(std::string const& path)
{
    struct stat st;
    return !path.empty() && stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

std::string Lower(std::string s)
{
    for (char& c : s)
        c = (char)std::tolower((unsigned char)c);
    return s;
}

// The next code point of UTF-8 text; a byte that starts no valid sequence gives U+FFFD and
// is skipped alone.
unsigned int NextCodePoint(unsigned char const*& p, unsigned char const* end)
{
    unsigned int c = *p++;
    if (c < 0x80)
        return c;
    int more = (c & 0xE0) == 0xC0 ? 1 : (c & 0xF0) == 0xE0 ? 2 : (c & 0xF8) == 0xF0 ? 3 : -1;
    if (more < 0 || end - p < more)
        return 0xFFFD;
    unsigned int cp = c & (0x3F >> more);
    for (int i = 0; i < more; ++i)
    {
        if ((p[i] & 0xC0) != 0x80)
            return 0xFFFD;
        cp = (cp << 6) | (p[i] & 0x3F);
    }
    // Overlong forms and surrogates are not characters.
    static unsigned int const kMin[4] = {0, 0x80, 0x800, 0x10000};
    if (cp < kMin[more] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        return 0xFFFD;
    p += more;
    return cp;
}

// fontconfig's best match for a family and style, when it is that family.
std::string MatchFont(std::string const& family, int style)
{
    if (!FcInit())
        return std::string();
    FcPattern* pattern = FcPatternCreate();
    FcPatternAddString(pattern, FC_FAMILY, (FcChar8 const*)family.c_str());
    FcPatternAddInteger(pattern, FC_WEIGHT, (style & kBold) ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(pattern, FC_SLANT, (style & kItalic) ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pattern, FC_SCALABLE, FcTrue);
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result = FcResultNoMatch;
    FcPattern* match = FcFontMatch(nullptr, pattern, &result);
    std::string file;
    if (match)
    {
        FcChar8* name = nullptr;
        FcChar8* path = nullptr;
        // fontconfig always answers with some font; only the family asked for counts.
        if (FcPatternGetString(match, FC_FAMILY, 0, &name) == FcResultMatch &&
            Lower((char const*)name) == Lower(family) &&
            FcPatternGetString(match, FC_FILE, 0, &path) == FcResultMatch)
            file = (char const*)path;
        FcPatternDestroy(match);
    }
    FcPatternDestroy(pattern);
    return IsFile(file) ? file : std::string();
}

std::string StandardDejaVu(int style)
{
    static char const* const kFiles[4] = {"DejaVuSans.ttf", "DejaVuSans-Bold.ttf",
                                          "DejaVuSans-Oblique.ttf", "DejaVuSans-BoldOblique.ttf"};
    std::string path = std::string(kDejaVuFolder) + kFiles[style & 3];
    return IsFile(path) ? path : std::string();
}

struct eGlyphEntry
{
    tagTextGlyph glyph;
    std::vector<unsigned char> coverage; // the cell, row 0 at the top
};

// The process's fonts and glyphs. Everything it hands out lives until the process ends.
class eGlyphCache
{
public:
    static eGlyphCache& Get()
    {
        static eGlyphCache s_Cache;
        return s_Cache;
    }

    std::string FindFile(std::string const& family, int style)
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        return FontFile(family, style);
    }
    unsigned char Glyphs(std::string const& text, int width, int height, std::string const& family,
                         int style, std::vector<tagTextGlyph*>& out);

private:
    eGlyphCache() = default;
    ~eGlyphCache();
    std::string FontFile(std::string const& family, int style);
    FT_Face Face(std::string const& file);
    std::unique_ptr<eGlyphEntry> Render(FT_Face face, unsigned int codePoint);
    static void Upload(eGlyphEntry& entry);

    std::mutex m_Mutex;
    FT_Library m_Library = nullptr;
    bool m_bLibraryTried = false;
    bool m_bFontconfig = false; // fontconfig was started
    std::map<std::pair<std::string, int>, std::string> m_mapFontFiles;
    std::set<std::string> m_setReported;
    std::map<std::string, FT_Face> m_mapFaces;
    // code point, pixel width, pixel height, font file
    std::map<std::tuple<unsigned int, int, int, std::string>, std::unique_ptr<eGlyphEntry>>
        m_mapGlyphs;
};

eGlyphCache::~eGlyphCache()
{
    // The GL context lives as long as the process, and goes with it: the textures too.
    for (auto& f : m_mapFaces)
        if (f.second)
            FT_Done_Face(f.second);
    if (m_Library)
        FT_Done_FreeType(m_Library);
    // fontconfig keeps its configuration until told to let go; nothing else here uses it.
    if (m_bFontconfig)
        FcFini();
}

std::string eGlyphCache::FontFile(std::string const& family, int style)
{
    style &= kBold | kItalic;
    std::string name = family.empty() ? kDefaultFamily : family;
    auto key = std::make_pair(name, style);
    auto it = m_mapFontFiles.find(key);
    if (it != m_mapFontFiles.end())
        return it->second;
    m_bFontconfig = true;
    std::string file = MatchFont(name, style);
    if (file.empty() && name != kDefaultFamily)
    {
        if (m_setReported.insert("family:" + name).second)
            std::fprintf(stderr, "host: font family '%s' not found; using %s\n", name.c_str(),
                         kDefaultFamily);
        file = FontFile(kDefaultFamily, style);
    }
    if (file.empty())
        file = StandardDejaVu(style);
    if (file.empty() && m_setReported.insert("dejavu").second)
        std::fprintf(stderr,
                     "host: no font for text: fontconfig knows no %s and %s%s is missing; install "
                     "the Debian package fonts-dejavu-core\n",
                     kDefaultFamily, kDejaVuFolder, "DejaVuSans.ttf");
    m_mapFontFiles[key] = file;
    return file;
}

FT_Face eGlyphCache::Face(std::string const& file)
{
    auto it = m_mapFaces.find(file);
    if (it != m_mapFaces.end())
        return it->second;
    if (!m_bLibraryTried)
    {
        m_bLibraryTried = true;
        if (FT_Init_FreeType(&m_Library))
        {
            m_Library = nullptr;
            std::fprintf(stderr, "host: FreeType could not be started; no text\n");
        }
    }
    FT_Face face = nullptr;
    if (m_Library && FT_New_Face(m_Library, file.c_str(), 0, &face))
    {
        face = nullptr;
        if (m_setReported.insert("face:" + file).second)
            std::fprintf(stderr, "host: font file '%s' cannot be read by FreeType\n", file.c_str());
    }
    m_mapFaces[file] = face;
    return face;
}

// The glyph at the face's current size in a cell of the line's height: ink at its left
// bearing (a negative one is moved to the cell's edge) and its baseline at the ascender.
std::unique_ptr<eGlyphEntry> eGlyphCache::Render(FT_Face face, unsigned int codePoint)
{
    FT_Size_Metrics const& m = face->size->metrics;
    int ascender = (int)std::ceil(m.ascender / 64.0);
    int descender = (int)std::floor(m.descender / 64.0); // negative: below the baseline
    int lineHeight = std::max(1, ascender - descender);

    std::unique_ptr<eGlyphEntry> entry(new eGlyphEntry());
    tagTextGlyph& g = entry->glyph;
    FT_GlyphSlot slot = nullptr;
    if (!FT_Load_Char(face, codePoint, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT))
        slot = face->glyph;
    FT_Bitmap const* bitmap = slot ? &slot->bitmap : nullptr;
    if (bitmap && bitmap->pixel_mode != FT_PIXEL_MODE_GRAY)
        bitmap = nullptr;
    int advance = slot ? (int)((slot->advance.x + 32) >> 6) : 0;
    int inkLeft = slot ? std::max(0, (int)slot->bitmap_left) : 0;
    int inkWidth = bitmap ? (int)bitmap->width : 0;
    g.m_nWidth = std::max(1, std::max(advance, inkLeft + inkWidth));
    g.m_nHeight = lineHeight;
    g.m_nTextureWidth = g.m_nWidth;
    g.m_nTextureHeight = g.m_nHeight;
    g.m_nAdvanceX = advance;
    g.m_nAdvanceY = 0;
    g.m_nBaseline = -descender;
    entry->coverage.assign((size_t)g.m_nWidth * g.m_nHeight, 0);
    if (!bitmap || !bitmap->buffer)
        return entry;
    int top = ascender - (int)slot->bitmap_top; // cell row of the bitmap's first row
    for (int r = 0; r < (int)bitmap->rows; ++r)
    {
        int y = top + r;
        if (y < 0 || y >= g.m_nHeight)
            continue;
        unsigned char const* src = bitmap->buffer + (ptrdiff_t)r * bitmap->pitch;
        for (int c = 0; c < inkWidth && inkLeft + c < g.m_nWidth; ++c)
            entry->coverage[(size_t)y * g.m_nWidth + inkLeft + c] = src[c];
    }
    return entry;
}

void eGlyphCache::Upload(eGlyphEntry& entry)
{
    if (entry.glyph.m_nTextureID || !Host::eGLContext::Get().IsReady())
        return;
    // Host work, not the effects': kept out of the call record, and the binding and unpack
    // state are put back as they were.
    Host::eDirectCallMute mute;
    GLint bound = 0, alignment = 4;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    GLuint id = 0;
    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_2D, id);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_R8, entry.glyph.m_nTextureWidth, entry.glyph.m_nTextureHeight,
                 0, GL_RED, GL_UNSIGNED_BYTE, entry.coverage.data());
    GLint const swizzle[4] = {GL_ONE, GL_ONE, GL_ONE, GL_RED};
    glTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_RGBA, swizzle);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
    glBindTexture(GL_TEXTURE_2D, (GLuint)bound);
    entry.glyph.m_nTextureID = id;
}

unsigned char eGlyphCache::Glyphs(std::string const& text, int width, int height,
                                  std::string const& family, int style,
                                  std::vector<tagTextGlyph*>& out)
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    out.clear();
    std::string file = FontFile(family, style);
    FT_Face face = file.empty() ? nullptr : Face(file);
    if (!face)
        return 0;
    if (width <= 0 && height <= 0)
        width = height = 16;
    width = std::max(0, width);
    height = std::max(0, height);
    bool sized = false;
    unsigned char const* p = (unsigned char const*)text.data();
    unsigned char const* end = p + text.size();
    while (p < end)
    {
        unsigned int cp = NextCodePoint(p, end);
        auto key = std::make_tuple(cp, width, height, file);
        auto it = m_mapGlyphs.find(key);
        if (it == m_mapGlyphs.end())
        {
            if (!sized && FT_Set_Pixel_Sizes(face, (FT_UInt)width, (FT_UInt)height))
            {
                std::fprintf(stderr, "host: font '%s' has no size %d x %d\n", file.c_str(), width,
                             height);
                out.clear();
                return 0;
            }
            sized = true;
            it = m_mapGlyphs.emplace(key, Render(face, cp)).first;
        }
        Upload(*it->second);
        out.push_back(&it->second->glyph);
    }
    return 1;
}

} // namespace

eSize2D eTextContext::GetTextGlyphSize(std::vector<tagTextGlyph*>& glyphs)
{
    eSize2D size;
    for (tagTextGlyph* g : glyphs)
    {
        if (!g)
            continue;
        size.cx += g->m_nAdvanceX;
        size.cy = std::max(size.cy, (double)g->m_nHeight);
    }
    return size;
}

unsigned char eTextContext::GetTextGlyphsFromCache(eString const& text, int width, int height,
                                                   eString const& font, int style,
                                                   std::vector<tagTextGlyph*>& glyphs)
{
    return eGlyphCache::Get().Glyphs(text.Str(), width, height, font.Str(), style, glyphs);
}

eString eTextContext::FindFontFile(eString const& font, int style)
{
    return eString(eGlyphCache::Get().FindFile(font.Str(), style));
}

} // namespace KYR
