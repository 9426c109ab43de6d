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

struct Register
{
    explicit Register(SceneDef def) { Registry().push_back(std::move(def)); }
};

} // namespace Gallery
