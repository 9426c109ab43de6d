// One annotation: a small flat drawing in pixels standing at a world position, built of
// parts (labels, lines, fills, pictures) drawn in the order they were added. The compose
// object owns the parts, the pass and the two matrices that scale the pixels to the view
// each frame, so a moving camera costs no geometry work; the parts' vertex stores change
// only with their content.
#pragma once
#include "eMatrix4.h"
#include "ePoint.h"
#include "eRect.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eVector3.h"
#include <vector>

namespace KYR
{

class eRenderPart;
class eTechnique;

// How an annotation stands: facing the screen, or lying in the world (flat on the globe's
// surface, or in the map's plane).
enum eBillBoardMode : int
{
    eBBM_SCREEN = 0,
    eBBM_WORLD = 2,
};

class eRenderCompose : public eRenderable
{
public:
    eRenderCompose();
    eRenderCompose(eRenderCompose const&) = default;
    eRenderCompose& operator=(eRenderCompose const&) = default;
    ~eRenderCompose() override;

    Type GetType() override;
    // Releases every part (see RemoveAllChild).
    unsigned char UnInitialize(eRenderEngine*) override;
    // False while hidden; otherwise sets the matrices and draws each part.
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // Map x, y and the height in metres.
    void SetPosition(ePoint3D const& position);
    ePoint3D GetPosition() const { return m_ptPosition; }
    void SetBillBoardMode(eBillBoardMode mode);
    eBillBoardMode GetBillBoardMode() const { return m_eBillBoardMode; }

    // Union of the parts' rectangles, pixels around the anchor.
    eRect2D GetBounds() const;
    // The anchor in world coordinates, computed again after the position or mode changed.
    eVector3T<double>& ComputeWorldPosition(eRenderEngine* engine);
    // The model and view matrices of a frame; `angle` turns a lying annotation (degrees).
    void CreateModelViewMatrix(eRenderEngine* engine, double angle, eMatrix4T<float>& model,
                               eMatrix4T<float>& view);

    // The compose object takes the part: it is freed with the last copy that holds it.
    void AddChild(eRenderPart* part);
    // Hands the first match back to the caller, who owns it from then on.
    void RemoveChild(eRenderPart* part);
    // Uninitialises the part and lets it go.
    void ReleaseChild(eRenderEngine* engine, eRenderPart* part);
    // Uninitialises every part and lets them go.
    void RemoveAllChild(eRenderEngine* engine);
    // Null outside 0 .. count - 1.
    eRenderPart* GetChild(int index);
    int GetChildrenCount() const { return (int)m_arChildren.size(); }

protected:
    // A part as the copies of a compose object hold it: the last holder deletes it, unless
    // it was handed back by RemoveChild.
    struct eChild
    {
        eRenderPart* m_pPart = nullptr;
        bool m_bHandedBack = false;
        ~eChild();
    };

    // Index of the first entry holding `part`, or -1.
    int FindChild(eRenderPart* part) const;

    std::vector<eShared<eChild>> m_arChildren;
    eBillBoardMode m_eBillBoardMode;
    ePoint3D m_ptPosition;
    eVector3T<double> m_vWorldPosition;
    eMatrix4T<float> m_matModel;
    eMatrix4T<float> m_matView;
    unsigned char m_bPositionDirty;
    eShared<eTechnique> m_pTechnique;
};

} // namespace KYR
