// How translucent solids reach the frame when their draw order must not matter: the strategy
// keeps off-screen targets that the translucent draws fill in any order, and composes them
// onto the frame afterwards. A strategy only acts when called: its owner keeps the targets
// at the viewport's size, and the host brackets the translucent draws with Begin and
// Composite.
#pragma once

namespace KYR
{

class eCamera;
class eRenderProgram;

class eBlendingStrategy
{
public:
    virtual ~eBlendingStrategy() {}

    // Makes the targets at the size that stands, replacing any made before.
    virtual void Create() = 0;
    // Deletes the targets.
    virtual void Destroy() = 0;
    // Hooks for strategies that need them between frames.
    virtual void Update() = 0;
    virtual void Reset() = 0;
    virtual int GetFlags() = 0;
    virtual void SetCamera(eCamera* camera) = 0;
    // Stores the size of the targets; Create makes them at it.
    virtual void SetSize(int width, int height) = 0;
    virtual void GetSize(int& width, int& height) = 0;
    // Binds and clears the targets and sets the blending that fills them; `program` is the
    // program the translucent draws use.
    virtual void Begin(eRenderProgram* program) = 0;
    // Draws the filled targets onto the frame buffer in force with `program`.
    virtual void Composite(eRenderProgram* program) = 0;
};

} // namespace KYR
