// A cloud of weighted points shown as a heat grid: every frame the points are counted into
// square cells of the set's grid size in pixels, snapped to the view's level so that cells
// stay put while the level does, and each occupied cell is drawn as one coloured quad with
// its total written on it in digits. Cells regroup as soon as the level changes.
#pragma once
#include "eColorMap.h"
#include "eGridPoint.h"
#include "eRenderGridSet.h"
#include <vector>

namespace KYR
{

class eVertexData;
struct tagTextGlyph;

class eRenderPointGridSet : public eRenderGridSet
{
public:
    eRenderPointGridSet();
    eRenderPointGridSet(eRenderPointGridSet const&) = default;
    eRenderPointGridSet& operator=(eRenderPointGridSet const&) = default;
    ~eRenderPointGridSet() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char RenderVertexBuffer(eRenderEngine*, eRenderSystem*, eCamera*) override;
    // The unit quad and the ten digit glyphs, each store made once.
    unsigned char CreateBuffers() override;
    unsigned char DestroyBuffers() override;

    // Takes the point (the set deletes it) and fills in its local position, so the anchor
    // must be fixed first (Create). A point belongs to one set.
    void Add(eGridPoint* point);
    void RemoveAll();
    // Copies the ranges of a map that has any; null or an empty map removes the set's own.
    void SetColorMap(eColorMap* map);
    eColorMap* GetColorMap() { return m_pColorMap; }

    // One cell: its colour (0..1) and centre (local frame), then the six quad vertices.
    void RenderVertex(eRenderProgram* program, eVector4T<float>& color, eVector4T<float>& centre);
    // One total in digits around a cell centre; `unit` is the world length of a pixel.
    void RenderText(eRenderProgram* program, eVector4T<float> centre, double unit, int value);

protected:
    // An occupied cell: the key holds the level (low 5 bits) and the column (27 bits above
    // them) in its low word, the row (27 bits) in its high word; totals wrap as 32-bit ints.
    struct eGridCell
    {
        unsigned long long m_nKey;
        int m_nTotal;
    };

    // Counts every point into cells of side `cell` (local units) at `level` and leaves the
    // occupied cells in m_arCells, in key order.
    void ClusterPoints(double cell, int level);
    // The centre of a cell of side `cell`, local frame (z 0).
    static eVector4T<float> CellCentre(unsigned long long key, double cell);
    void DrawCells(eRenderProgram* program, double cell);
    void DrawLabels(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera, double cell);

    eShared<eVertexData> m_pQuadData;
    eShared<eTechnique> m_pLabelTechnique;
    std::vector<tagTextGlyph*> m_arGlyphs; // the host's cache owns them
    eShared<eVertexData> m_pGlyphData;
    std::vector<eGridPoint*> m_arPoints;
    eShared<eColorMap> m_pColorMap;

    std::vector<eGridCell> m_arCells; // this frame's cells

    // Puts m_arCells in key order.
    void SortCells();
    std::vector<eGridCell> m_arSorted; // the sort's second buffer

private:
    // The points added to a set and its copies, deleted once by the last holder.
    struct ePointOwner;
    eShared<ePointOwner> m_pOwner;

    // Open-addressed table of this frame's cells: key and running total per slot.
    struct eSlot
    {
        unsigned long long m_nKey;
        unsigned int m_nTotal;
    };
    void ResetTable(size_t expected);
    void Count(unsigned long long key, unsigned int value);
    void GrowTable();
    std::vector<eSlot> m_arTable;
    size_t m_nTableUsed = 0;
    int m_nTableShift = 64;
};

} // namespace KYR
