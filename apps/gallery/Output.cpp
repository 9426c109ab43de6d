#include "Output.h"

#include <cxxabi.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <typeinfo>

namespace Gallery
{

bool WriteAnimatedWebP(std::string const& path, Frames const& frames, int width, int height,
                       int frameMs, std::string& error)
{
    WebPAnimEncoderOptions options;
    WebPConfig config;
    if (!WebPAnimEncoderOptionsInit(&options) || !WebPConfigInit(&config))
    {
        error = "the WebP library does not match its headers";
        return false;
    }
    options.anim_params.loop_count = 0; // for ever
    // Lossy frames: effects over the Earth map compress poorly without loss, and method 2
    // keeps encoding quick on a software renderer's machine.
    config.quality = 80.0f;
    config.method = 2;
    std::unique_ptr<WebPAnimEncoder, void (*)(WebPAnimEncoder*)> encoder(
        WebPAnimEncoderNew(width, height, &options), WebPAnimEncoderDelete);
    if (!encoder)
    {
        error = "cannot start the WebP encoder";
        return false;
    }
    int timestamp = 0;
    for (auto const& rgba : frames)
    {
        WebPPicture picture;
        if (!WebPPictureInit(&picture))
        {
            error = "the WebP library does not match its headers";
            return false;
        }
        picture.use_argb = 1;
        picture.width = width;
        picture.height = height;
        bool ok = WebPPictureImportRGBA(&picture, rgba.data(), width * 4) &&
                  WebPAnimEncoderAdd(encoder.get(), &picture, timestamp, &config);
        WebPPictureFree(&picture);
        if (!ok)
        {
            error = std::string("WebP encoding failed: ") + WebPAnimEncoderGetError(encoder.get());
            return false;
        }
        timestamp += frameMs;
    }
    WebPData data;
    WebPDataInit(&data);
    if (!WebPAnimEncoderAdd(encoder.get(), nullptr, timestamp, nullptr) ||
        !WebPAnimEncoderAssemble(encoder.get(), &data))
    {
        error = std::string("WebP encoding failed: ") + WebPAnimEncoderGetError(encoder.get());
        return false;
    }
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<char const*>(data.bytes), (std::streamsize)data.size);
    WebPDataClear(&data);
    if (!out.flush())
    {
        error = "cannot write \"" + path + "\"";
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
