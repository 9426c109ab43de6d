// What a gallery run writes besides the still pictures: animated WebP files of the scenes
// that move, and an index.html with one card per scene (its picture or animation, the effect
// classes it uses and what it shows).
#pragma once
#include "eScene.h"
#include <string>
#include <vector>

namespace Gallery
{

// Frames of RGBA bytes, row 0 at the top, each width * height * 4.
using Frames = std::vector<std::vector<unsigned char>>;

// Writes an endlessly looping animated WebP, each frame shown frameMs milliseconds. False with
// a reason in `error` when encoding or writing fails.
bool WriteAnimatedWebP(std::string const& path, Frames const& frames, int width, int height,
                       int frameMs, std::string& error);

// The effect classes of the library among the scene's effects, in the order first added
// (host-side helpers of a scene are left out).
std::vector<std::string> EffectClasses(KYR::Host::eScene const& scene);

struct Card
{
    std::string name;
    std::string description;
    std::string picture;   // file name beside the page
    std::string animation; // empty when the scene does not move
    std::vector<std::string> classes;
};

// Writes <dir>/index.html showing the cards. False with a reason when it cannot be written.
bool WritePage(std::string const& dir, std::vector<Card> const& cards, int width, int height,
               std::string& error);

} // namespace Gallery
