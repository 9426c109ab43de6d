// Keeps point stations shown by world objects from crowding each other. Every station has a
// box in a fixed integer grid over the whole earth (100 units a degree, y down from the north
// pole) that grows with the camera distance; a station whose box meets the box of one shown
// before it is hidden, so stations thin out as the camera moves away. The flags go to each
// world object's append mesh, and a pick finds the shown station under a pixel. It draws
// nothing itself: its Render only brings the boxes up to date when the distance changed.
#pragma once
#include "ePoint.h"
#include "eRenderWorldObject.h"
#include "eVector3.h"
#include <vector>

namespace KYR
{

// The grid over the whole earth: 36000 units around, 18000 from pole to pole.
extern int g_nAvoidGridWidth;
extern int g_nAvoidGridHeight;

class eRenderWorldObjectAvoid : public eRenderable
{
public:
    eRenderWorldObjectAvoid();
    eRenderWorldObjectAvoid(eRenderWorldObjectAvoid const&) = default;
    eRenderWorldObjectAvoid& operator=(eRenderWorldObjectAvoid const&) = default;
    ~eRenderWorldObjectAvoid() override;

    // Rebuilds the boxes after the camera distance changed or a station was picked, and
    // hands them to the objects. False when neither avoiding nor picking is on.
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // Not owned. The objects' object numbers follow the stations' order.
    void AddRenderWorldObject(eRenderWorldObject* object);
    // Longitude and latitude (x, y, degrees) of each station, in object order. The boxes
    // are replaced; the positions are appended to those given before.
    void SetRefGeoPoints(std::vector<eVector3T<double>>& points);
    // The shown station under a pixel (x right, y down from the top row), or -1. The pick
    // reaches the objects at the next Render. Needs a drawn frame first.
    int SelectStation(ePoint pixel);
    void SetCanSelect(bool on) { m_bCanSelect = on ? 1 : 0; }
    void SetCanAvoid(bool on) { m_bCanAvoid = on ? 1 : 0; }

    // A geographic point in grid units.
    static ePoint GeoToGrid(double lon, double lat);

protected:
    // The boxes start again from the stations' points, with the lasting selection.
    void ResetAvoidBound();
    // Grows every box by the camera distance, as far as the objects' symbols grow.
    void UpdateAvoidBoundSize();
    // Hides each station whose box meets the box of a station shown before it; a selected
    // station goes first, so it stays shown.
    void ComputerAvoid(eRenderEngine* engine, eCamera* camera, eViewport* viewport);

    std::vector<ePoint2D> m_arRefPoints;
    std::vector<AvoidBound> m_arBaseBounds;
    std::vector<AvoidBound> m_arAvoidBounds;
    std::vector<eRenderWorldObject*> m_arObjects;
    unsigned char m_bCanSelect;
    unsigned char m_bCanAvoid;
    eRenderEngine* m_pEngine;
    eCamera* m_pCamera;
    eViewport* m_pViewport;
    double m_dDistance;
    unsigned char m_bSelectChanged;

private:
    // The slot of a cell in the table of cells (open addressing), or the empty slot where it
    // would go.
    size_t CellSlot(long long key) const;

    // Scratch of ComputerAvoid, kept so that an update allocates nothing once warm: the shown
    // boxes filed by grid cell in a table of cells, each cell the head of a chain through
    // m_arNextShown.
    std::vector<long long> m_arCellKeys;
    std::vector<int> m_arCellFirst;
    std::vector<int> m_arNextShown;
    std::vector<int> m_arOrder;
};

} // namespace KYR
