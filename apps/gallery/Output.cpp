#include "Output.h"

#include <cxxabi.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <typeinfo>

namespace Gallery
{

struct AnimatedWebP::Encoder
{
    WebPAnimEncoder* encoder = nullptr;
    WebPConfig config;
};

AnimatedWebP::AnimatedWebP(int width, int height, int frameMs)
    : m_pEncoder(new Encoder()), m_nWidth(width), m_nHeight(height), m_nFrameMs(frameMs)
{
    WebPAnimEncoderOptions options;
    if (!WebPAnimEncoderOptionsInit(&options) || !WebPConfigInit(&m_pEncoder->config))
    {
        m_strError = "the WebP library does not match its headers";
        return;
    }
    options.anim_params.loop_count = 0; // for ever
    // Lossy frames: effects over the Earth map compress poorly without loss, and method 2
    // keeps encoding quick on a software renderer's machine.
    m_pEncoder->config.quality = 80.0f;
    m_pEncoder->config.method = 2;
    m_pEncoder->encoder = WebPAnimEncoderNew(width, height, &options);
    if (!m_pEncoder->encoder)
        m_strError = "cannot start the WebP encoder";
}

AnimatedWebP::~AnimatedWebP()
{
    if (m_pEncoder->encoder)
        WebPAnimEncoderDelete(m_pEncoder->encoder);
    delete m_pEncoder;
}

bool AnimatedWebP::Add(std::vector<unsigned char> const& rgba)
{
    if (!m_pEncoder->encoder || rgba.size() != (size_t)m_nWidth * m_nHeight * 4)
    {
        if (m_strError.empty())
            m_strError = "a frame of the wrong size";
        return false;
    }
    WebPPicture picture;
    if (!WebPPictureInit(&picture))
    {
        m_strError = "the WebP library does not match its headers";
        return false;
    }
    picture.use_argb = 1;
    picture.width = m_nWidth;
    picture.height = m_nHeight;
    bool ok = WebPPictureImportRGBA(&picture, rgba.data(), m_nWidth * 4) &&
              WebPAnimEncoderAdd(m_pEncoder->encoder, &picture, m_nTimestamp, &m_pEncoder->config);
    WebPPictureFree(&picture);
    if (!ok)
    {
        m_strError =
            std::string("WebP encoding failed: ") + WebPAnimEncoderGetError(m_pEncoder->encoder);
        return false;
    }
    m_nTimestamp += m_nFrameMs;
    return true;
}

bool AnimatedWebP::Write(std::string const& path)
{
    if (!m_pEncoder->encoder)
        return false;
    WebPData data;
    WebPDataInit(&data);
    if (!WebPAnimEncoderAdd(m_pEncoder->encoder, nullptr, m_nTimestamp, nullptr) ||
        !WebPAnimEncoderAssemble(m_pEncoder->encoder, &data))
    {
        m_strError =
            std::string("WebP encoding failed: ") + WebPAnimEncoderGetError(m_pEncoder->encoder);
        return false;
    }
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<char const*>(data.bytes), (std::streamsize)data.size);
    WebPDataClear(&data);
    if (!out.flush())
    {
        m_strError = "cannot write \"" + path + "\"";
        return false;
    }
    return true;
}

std::vector<std::string> EffectClasses(KYR::Host::eScene const& scene)
{
    std::vector<std::string> classes;
    for (KYR::eRenderable* effect : scene.Effects())
    {
        int status = 0;
        char* name = abi::__cxa_demangle(typeid(*effect).name(), nullptr, nullptr, &status);
        std::string full = status == 0 && name ? name : typeid(*effect).name();
        std::free(name);
        // Classes of the library are KYR::eName; the host's own (KYR::Host::...) and a
        // scene's local helpers are not effects a reader could use.
        if (full.compare(0, 5, "KYR::") != 0 || full.find("::", 5) != std::string::npos)
            continue;
        std::string shortName = full.substr(5);
        if (std::find(classes.begin(), classes.end(), shortName) == classes.end())
            classes.push_back(shortName);
    }
    return classes;
}

namespace
{

std::string Escape(std::string const& text)
{
    std::string out;
    for (char c : text)
        switch (c)
        {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += c;
        }
    return out;
}

char const* const kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>KyrSpace RenderEffect gallery</title>
<style>
body { margin: 0; padding: 1.5rem; background: #14161b; color: #e4e6eb;
       font: 15px/1.45 "DejaVu Sans", sans-serif; }
h1 { font-size: 1.4rem; margin: 0 0 .3rem; }
header p { margin: 0 0 1.2rem; color: #9aa0ab; }
main { display: grid; gap: 1.2rem; grid-template-columns: repeat(auto-fill, minmax(340px, 1fr)); }
figure { margin: 0; background: #1f2229; border-radius: 6px; overflow: hidden; }
figure img { display: block; width: 100%; height: auto; background: #000; }
figure[data-state="broken"] img { outline: 3px solid #e5484d; min-height: 4rem; }
figcaption { padding: .6rem .8rem .8rem; }
figcaption h2 { font-size: 1rem; margin: 0; }
figcaption h2 span { font-weight: normal; color: #9aa0ab; font-size: .85rem; }
figcaption p { margin: .25rem 0 0; }
figcaption .classes { font-family: "DejaVu Sans Mono", monospace; font-size: .8rem; color: #8fc1ff; }
</style>
</head>
)";

// Marks each picture loaded or broken once the page has loaded, for the reader and for a
// headless browser that checks the page.
char const* const kScript = R"(<script>
window.addEventListener('load', function () {
  var pictures = document.querySelectorAll('figure img'), broken = 0;
  pictures.forEach(function (img) {
    var ok = img.complete && img.naturalWidth > 0;
    img.closest('figure').dataset.state = ok ? 'loaded' : 'broken';
    if (!ok) broken++;
  });
  document.body.dataset.pictures = pictures.length + ' pictures, ' + broken + ' broken';
});
</script>
)";

} // namespace

bool WritePage(std::string const& dir, std::vector<Card> const& cards, int width, int height,
               std::string& error)
{
    std::string path = dir + "/index.html";
    std::ofstream out(path);
    out << kHead << "<body>\n<header>\n<h1>KyrSpace RenderEffect gallery</h1>\n<p>" << cards.size()
        << " scene" << (cards.size() == 1 ? "" : "s") << " drawn by kyr-gallery at " << width
        << "&times;" << height
        << " on the reference host; moving scenes are shown as "
           "animations.</p>\n</header>\n<main>\n";
    for (Card const& c : cards)
    {
        std::string const& shown = c.animation.empty() ? c.picture : c.animation;
        out << "<figure id=\"" << Escape(c.name) << "\">\n<a href=\"" << Escape(c.picture)
            << "\"><img src=\"" << Escape(shown) << "\" width=\"" << width << "\" height=\""
            << height << "\" alt=\"" << Escape(c.name) << ": " << Escape(c.description)
            << "\"></a>\n<figcaption>\n<h2>" << Escape(c.name)
            << (c.animation.empty() ? "" : " <span>animated</span>") << "</h2>\n<p>"
            << Escape(c.description) << "</p>\n<p class=\"classes\">";
        for (size_t i = 0; i < c.classes.size(); ++i)
            out << (i ? ", " : "") << Escape(c.classes[i]);
        if (c.classes.empty())
            out << "host only";
        out << "</p>\n</figcaption>\n</figure>\n";
    }
    out << "</main>\n" << kScript << "</body>\n</html>\n";
    if (!out.flush())
    {
        error = "cannot write \"" + path + "\"";
        return false;
    }
    return true;
}

} // namespace Gallery
