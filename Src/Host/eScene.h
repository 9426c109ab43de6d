// A scene of the reference host: the engine, camera, coordinate system, queue and
// render system, and the effects added to it. One RenderFrame draws every effect
// into the host's frame buffer the way the engine does it.
//
// Teardown is the scene's: when it is destroyed it calls UnInitialize on every effect still
// in it, with the context current, before it releases the engine's resources, so whoever
// made an effect only deletes it (after the scene, or before: an effect destroyed while in
// a scene leaves it by itself and is not touched again).
#pragma once
#include "eBlendingStrategy.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eGlobeModel.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderSystem.h"
#include "eRenderable.h"
#include <string>
#include <utility>
#include <vector>

namespace KYR
{
namespace Host
{

class eScene
{
public:
    // Creates the GL context (once per process) at the given size.
    eScene(int width, int height, eSceneMode mode = eSM_GLOBE, int projectionType = PJ_PLATE_CARREE);
    // Uninitialises the effects still in the scene, then releases the engine's resources.
    ~eScene();
    eScene(eScene const&) = delete;
    eScene& operator=(eScene const&) = delete;

    bool IsReady() const { return m_bReady; }
    eRenderEngine& Engine() { return m_Engine; }
    eCamera& Camera() { return m_Camera; }
    eViewport& Viewport() { return m_Viewport; }
    eCoordSys& CoordSys() { return m_CoordSys; }
    eCanvas& Canvas() { return m_Canvas; }
    eRenderSystem& RenderSystem() { return m_RenderSystem; }
    eRenderQueue& Queue() { return m_Queue; }
    eGlobeModel& GlobeModel() { return m_GlobeModel; }

    // Adds an effect (not owned): Create with camera and canvas, then Initialize.
    void Add(eRenderable* effect);
    // Adds an effect whose translucent solids go through `strategy` (see
    // DrawTranslucentSolids).
    void Add(eRenderable* effect, eBlendingStrategy* strategy);
    // Takes the effect out without uninitialising it.
    void Remove(eRenderable* effect);
    // Takes a dying effect out of every scene (called by eRenderable's destructor).
    static void Forget(eRenderable* effect);
    void SetClearColor(float r, float g, float b, float a);
    // The effects added, in the order they were added.
    std::vector<eRenderable*> const& Effects() const { return m_arEffects; }

    // A click at mouse pixel (px, py), y counted from the top row: the ray through it goes to
    // every effect's Query, which selects what it hits and reports it to its own callback.
    // `keep` keeps the selections of earlier clicks.
    void Pick(int px, int py, bool keep);

    // One frame: queue every effect, draw the groups in rising number.
    void RenderFrame();
    std::vector<unsigned char> ReadPixels() const; // RGBA, row 0 at the top
    bool SavePNG(std::string const& path) const;
    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }

private:
    void ApplyCameraMatrices();
    int ProjectionKind();
    void DrawEntry(eRenderQueueEntry const& entry);
    void DrawGroup(eRenderQueueGroup& group);

    // Order-independent transparency (eSceneTranslucent.cpp).
    void TakeTranslucentEntries();
    void DrawTranslucentSolids();
    void ForgetStrategy(eRenderable* effect);
    eBlendingStrategy* StrategyOf(eRenderable* effect) const;
    std::vector<std::pair<eRenderable*, eBlendingStrategy*>> m_arStrategies;
    std::vector<eRenderQueueEntry> m_arTranslucent; // this frame's, in queue order

    bool m_bReady = false;
    int m_nWidth, m_nHeight;
    float m_Clear[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    eViewport m_Viewport;
    eCoordSys m_CoordSys;
    eCanvas m_Canvas;
    eCamera m_Camera;
    eGlobeModel m_GlobeModel;
    eRenderEngine m_Engine;
    eRenderQueue m_Queue;
    eRenderSystem m_RenderSystem;
    std::vector<eRenderable*> m_arEffects;
};

} // namespace Host
} // namespace KYR
