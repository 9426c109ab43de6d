// What a gallery run writes besides the still pictures: animated WebP files of the scenes
// that move, and an index.html with one card per scene (its picture or animation, the effect
// classes it uses and what it shows).
#pragma once
#include "eScene.h"
#include <string>
#include <vector>

namespace Gallery
{

// An endlessly looping animated WebP, each frame shown frameMs milliseconds. Frames are
// encoded as they are added, so a long animation does not pile up in memory. Add and Write
// are false, with a reason in Error(), when encoding or writing fails.
class AnimatedWebP
{
public:
    AnimatedWebP(int width, int height, int frameMs);
    ~AnimatedWebP();
    AnimatedWebP(AnimatedWebP const&) = delete;
    AnimatedWebP& operator=(AnimatedWebP const&) = delete;

    // RGBA bytes, row 0 at the top, width * height * 4.
    bool Add(std::vector<unsigned char> const& rgba);
    bool Write(std::string const& path);
    std::string const& Error() const { return m_strError; }

private:
    struct Encoder;
    Encoder* m_pEncoder;
    int m_nWidth, m_nHeight, m_nFrameMs, m_nTimestamp = 0;
    std::string m_strError;
};

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
