// kyr-gallery: renders the named scenes headless to PNG files, the moving ones also to
// animated WebP files with --animate, and writes an index.html showing them all.
#include "Gallery.h"
#include "Output.h"
#include "eFile.h"
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace
{

int const kFrameMs = 80; // 12.5 frames a second in the animations

struct Options
{
    std::vector<std::string> scenes;
    std::string out = "gallery-out";
    int width = 1024;
    int height = 768;
    int frames = 1;
    int animate = 0; // frames of each animation; 0: none
    std::string workPath;
    bool list = false;
};

void Usage()
{
    std::printf("usage: kyr-gallery [--list] [--scene NAME]... [--out DIR] [--size WxH]\n"
                "                   [--frames N] [--animate N] [--work-path DIR]\n");
}

bool ParseSize(char const* s, int& w, int& h)
{
    char extra = 0;
    return std::sscanf(s, "%dx%d%c", &w, &h, &extra) == 2 && w > 0 && h > 0 && w <= 8192 &&
           h <= 8192;
}

bool ParseArgs(int argc, char** argv, Options& o)
{
    for (int i = 1; i < argc; ++i)
    {
        std::string a = argv[i];
        bool hasValue = i + 1 < argc;
        if (a == "--list")
            o.list = true;
        else if (a == "--help" || a == "-h")
        {
            Usage();
            std::exit(0);
        }
        else if (a == "--scene" && hasValue)
            o.scenes.push_back(argv[++i]);
        else if (a == "--out" && hasValue)
            o.out = argv[++i];
        else if (a == "--work-path" && hasValue)
            o.workPath = argv[++i];
        else if (a == "--size" && hasValue)
        {
            if (!ParseSize(argv[++i], o.width, o.height))
            {
                std::fprintf(stderr, "kyr-gallery: bad size \"%s\" (expected WxH, e.g. 1024x768)\n",
                             argv[i]);
                return false;
            }
        }
        else if ((a == "--frames" || a == "--animate") && hasValue)
        {
            char* end = nullptr;
            long n = std::strtol(argv[++i], &end, 10);
            long const most = a == "--frames" ? 100000 : 1000;
            if (!end || *end || n < 1 || n > most)
            {
                std::fprintf(stderr, "kyr-gallery: bad frame count \"%s\" for %s (1 to %ld)\n",
                             argv[i], a.c_str(), most);
                return false;
            }
            (a == "--frames" ? o.frames : o.animate) = (int)n;
        }
        else
        {
            std::fprintf(stderr, "kyr-gallery: unknown or incomplete option \"%s\"\n", a.c_str());
            Usage();
            return false;
        }
    }
    return true;
}

Gallery::SceneDef const* Find(std::string const& name)
{
    for (auto const& s : Gallery::Registry())
        if (s.name == name)
            return &s;
    return nullptr;
}

bool MissingResources(Gallery::SceneDef const& def)
{
    std::string base = KYR::eSystem::GetWorkPath().Cstr();
    bool missing = false;
    for (auto const& r : def.resources)
        if (!std::filesystem::exists(base + r))
        {
            std::fprintf(stderr, "kyr-gallery: scene \"%s\" needs missing resource \"%s%s\"\n",
                         def.name.c_str(), base.c_str(), r.c_str());
            missing = true;
        }
    return missing;
}

// Draws the frames of an animation after the still picture. A scene whose frames all equal
// the first does not move, and gets no animation; the encoder starts at the first change.
bool Animate(KYR::Host::eScene& scene, Gallery::SceneDef const& def, Options const& o,
             Gallery::Card& card)
{
    std::vector<unsigned char> first;
    int same = 0; // frames equal to the first, not yet encoded
    std::unique_ptr<Gallery::AnimatedWebP> webp;
    for (int f = 0; f < o.animate; ++f)
    {
        scene.RenderFrame();
        std::vector<unsigned char> frame = scene.ReadPixels();
        // Opaque, as the still picture: the frame's alpha is no transparency of the scene.
        for (size_t i = 3; i < frame.size(); i += 4)
            frame[i] = 255;
        if (f == 0)
            first = frame;
        if (!webp && frame == first)
        {
            ++same;
            continue;
        }
        if (!webp)
        {
            webp.reset(new Gallery::AnimatedWebP(o.width, o.height, kFrameMs));
            for (; same > 0; --same)
                webp->Add(first);
        }
        webp->Add(frame);
    }
    if (!webp)
        return true;
    card.animation = def.name + ".webp";
    if (!webp->Write(o.out + "/" + card.animation))
    {
        std::fprintf(stderr, "kyr-gallery: scene \"%s\": %s\n", def.name.c_str(),
                     webp->Error().c_str());
        card.animation.clear();
        return false;
    }
    std::printf("%s/%s  (%d frames)\n", o.out.c_str(), card.animation.c_str(), o.animate);
    return true;
}

int RunScene(Gallery::SceneDef const& def, Options const& o, std::vector<Gallery::Card>& cards)
{
    if (MissingResources(def))
        return 1;
    // The effects outlive the scene, which uninitialises those still in it when it goes.
    Gallery::SceneKeep keep;
    KYR::Host::eScene scene(o.width, o.height, def.mode, def.projectionType);
    if (!scene.IsReady())
    {
        std::fprintf(stderr, "kyr-gallery: no OpenGL context for scene \"%s\"\n", def.name.c_str());
        return 1;
    }
    if (!def.build(scene, keep))
    {
        std::fprintf(stderr, "kyr-gallery: scene \"%s\" could not be built\n", def.name.c_str());
        return 1;
    }
    double lastMs = 0.0;
    for (int f = 0; f < o.frames; ++f)
    {
        auto t0 = std::chrono::steady_clock::now();
        scene.RenderFrame();
        lastMs = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0)
                     .count();
    }
    Gallery::Card card{def.name, def.description, def.name + ".png", "",
                       Gallery::EffectClasses(scene)};
    std::string path = o.out + "/" + card.picture;
    if (!scene.SavePNG(path))
    {
        std::fprintf(stderr, "kyr-gallery: cannot write \"%s\"\n", path.c_str());
        return 1;
    }
    std::printf("%s  (%dx%d, %d frame%s, last frame %.1f ms)\n", path.c_str(), o.width, o.height,
                o.frames, o.frames == 1 ? "" : "s", lastMs);
    if (o.animate && !Animate(scene, def, o, card))
        return 1;
    cards.push_back(card);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    Options o;
    if (!ParseArgs(argc, argv, o))
        return 2;
    if (o.list)
    {
        for (auto const& s : Gallery::Registry())
            std::printf("%-20s %s\n", s.name.c_str(), s.description.c_str());
        return 0;
    }
    if (!o.workPath.empty())
        KYR::eSystem::SetWorkPath(o.workPath.c_str());
    if (o.scenes.empty())
        for (auto const& s : Gallery::Registry())
            o.scenes.push_back(s.name);
    for (auto const& name : o.scenes)
        if (!Find(name))
        {
            std::fprintf(stderr, "kyr-gallery: unknown scene \"%s\" (see --list)\n", name.c_str());
            return 2;
        }
    std::error_code ec;
    std::filesystem::create_directories(o.out, ec);
    if (ec)
    {
        std::fprintf(stderr, "kyr-gallery: cannot create \"%s\": %s\n", o.out.c_str(),
                     ec.message().c_str());
        return 1;
    }
    int failures = 0;
    std::vector<Gallery::Card> cards;
    for (auto const& name : o.scenes)
        failures += RunScene(*Find(name), o, cards);
    std::string error;
    if (!Gallery::WritePage(o.out, cards, o.width, o.height, error))
    {
        std::fprintf(stderr, "kyr-gallery: %s\n", error.c_str());
        return 1;
    }
    std::printf("%s/index.html  (%zu scene%s)\n", o.out.c_str(), cards.size(),
                cards.size() == 1 ? "" : "s");
    return failures ? 1 : 0;
}
