#include "Gallery.h"

namespace Gallery
{

std::vector<SceneDef>& Registry()
{
    static std::vector<SceneDef> s_scenes;
    return s_scenes;
}

} // namespace Gallery
