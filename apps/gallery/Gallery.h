// The gallery: named scenes rendered headless to PNG files.
#pragma once
#include "eScene.h"
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Gallery
{

// What a scene leaves alive while its frames are drawn.
struct SceneKeep
{
    std::vector<std::shared_ptr<void>> objects;
    template <typename T> T* Keep(T* p)
    {
        objects.push_back(std::shared_ptr<void>(p, [](void* q) { delete static_cast<T*>(q); }));
        return p;
    }
};

struct SceneDef
{
    std::string name;
    std::string description;
    KYR::eSceneMode mode;
    int projectionType;
    std::vector<std::string> resources; // paths below the work path the scene reads
    // Places the camera and adds the effects; false when the scene cannot be built.
    std::function<bool(KYR::Host::eScene&, SceneKeep&)> build;
};

std::vector<SceneDef>& Registry();

// The Earth as a backdrop for effect scenes: the xplanet map on the globe effect without
// relief, so that effects at sea level lie on it, lit by a sun standing over (sunLon, sunLat).
void AddEarth(KYR::Host::eScene& scene, SceneKeep& keep, double sunLon, double sunLat);

// The resources of AddEarth followed by a scene's own.
inline std::vector<std::string> WithEarth(std::vector<std::string> more)
{
    more.insert(more.begin(), {"Resources/Icons/WGS84-Globe.jpg", "Resources/Icons/elev_flat.png"});
    return more;
}

struct Register
{
    explicit Register(SceneDef def) { Registry().push_back(std::move(def)); }
};

} // namespace Gallery
