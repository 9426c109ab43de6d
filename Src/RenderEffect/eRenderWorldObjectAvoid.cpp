#include "eRenderWorldObjectAvoid.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eMaterial.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include <algorithm>
#include <cmath>

namespace KYR
{

int g_nAvoidGridWidth = 36000;
int g_nAvoidGridHeight = 18000;

namespace
{
unsigned int const kSolidTextureGroup = 6;
// The box's half side in grid units per unit of the objects' scale factor.
double const kBoxPerScale = 0.025;

// A value truncated to int; out of range and NaN give a value far outside the grid.
int Truncate(double v)
{
    if (!(v > -1.0e9 && v < 1.0e9))
        return -1000000000;
    return (int)v;
}

int FloorDiv(int a, int b)
{
    int q = a / b;
    return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

long long CellKey(int cx, int cy)
{
    return ((long long)cx << 32) ^ (long long)(unsigned int)cy;
}

// No cell has this key: both halves would have to be the most negative int.
long long const kNoCell = (long long)((unsigned long long)1 << 63);

// Whether two boxes share area (edges that only touch do not count).
bool Meet(eRect const& a, eRect const& b)
{
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}
} // namespace

eRenderWorldObjectAvoid::eRenderWorldObjectAvoid()
    : m_bCanSelect(0), m_bCanAvoid(0), m_pEngine(nullptr), m_pCamera(nullptr), m_pViewport(nullptr),
      m_dDistance(0.0), m_bSelectChanged(0)
{
}

eRenderWorldObjectAvoid::~eRenderWorldObjectAvoid() {}

ePoint eRenderWorldObjectAvoid::GeoToGrid(double lon, double lat)
{
    return ePoint(Truncate((lon + 180.0) * g_nAvoidGridWidth / 360.0),
                  Truncate((90.0 - lat) * g_nAvoidGridHeight / 180.0));
}

void eRenderWorldObjectAvoid::AddRenderWorldObject(eRenderWorldObject* object)
{
    m_arObjects.push_back(object);
}

void eRenderWorldObjectAvoid::SetRefGeoPoints(std::vector<eVector3T<double>>& points)
{
    m_arBaseBounds.clear();
    m_arBaseBounds.reserve(points.size());
    for (eVector3T<double> const& p : points)
    {
        m_arRefPoints.push_back(ePoint2D(p.x, p.y));
        AvoidBound bound;
        bound.m_bVisible = 1;
        bound.m_bSelected = 0;
        ePoint at = GeoToGrid(p.x, p.y);
        bound.m_rcBound.Offset(at.x, at.y);
        m_arBaseBounds.push_back(bound);
    }
}

unsigned char eRenderWorldObjectAvoid::Render(eRenderEngine* engine, eRenderSystem*,
                                              eCamera* camera, eViewport* viewport)
{
    if (!m_pEngine)
    {
        m_pEngine = engine;
        m_pCamera = camera;
        m_pViewport = viewport;
    }
    if (!m_bCanAvoid && !m_bCanSelect)
        return 0;
    if (!camera)
        return 1;
    double distance = camera->GetDistance();
    if (distance != m_dDistance || m_bSelectChanged)
    {
        m_dDistance = distance;
        m_bSelectChanged = 0;
        ResetAvoidBound();
        UpdateAvoidBoundSize();
        if (m_bCanAvoid)
            ComputerAvoid(engine, camera, viewport);
        for (eRenderWorldObject* object : m_arObjects)
            if (object)
                object->UpdateAppendMesh(m_arAvoidBounds);
    }
    return 1;
}

unsigned char eRenderWorldObjectAvoid::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                         eRenderQueue* queue)
{
    if (m_arObjects.empty() || !queue)
        return 0;
    eRenderWorldObject* first = m_arObjects.front();
    eMaterial* material = first ? first->GetMaterial() : nullptr;
    queue->AddRenderable(material ? material->GetTechnique(0) : nullptr, this, kSolidTextureGroup);
    return 1;
}

void eRenderWorldObjectAvoid::ResetAvoidBound()
{
    m_arAvoidBounds = m_arBaseBounds;
}

void eRenderWorldObjectAvoid::UpdateAvoidBoundSize()
{
    eRenderWorldObject* first = m_arObjects.empty() ? nullptr : m_arObjects.front();
    double factor = 1.0;
    if (first && first->GetScaleType() == eST_DISTANCE)
        factor = m_dDistance / 800.0;
    else if (first && first->GetScaleType() == eST_FIXED)
        factor = 200.0;
    // Boxes larger than the whole grid change nothing more; the cap keeps their sides in int.
    int s = std::min(Truncate((float)(factor * kBoxPerScale)), 1 << 24);
    for (AvoidBound& bound : m_arAvoidBounds)
        bound.m_rcBound.Inflate(s, s);
}

size_t eRenderWorldObjectAvoid::CellSlot(long long key) const
{
    size_t const mask = m_arCellKeys.size() - 1;
    size_t slot = (size_t)(((unsigned long long)key * 0x9E3779B97F4A7C15ull) >> 32) & mask;
    while (m_arCellKeys[slot] != kNoCell && m_arCellKeys[slot] != key)
        slot = (slot + 1) & mask;
    return slot;
}

void eRenderWorldObjectAvoid::ComputerAvoid(eRenderEngine*, eCamera*, eViewport*)
{
    size_t const n = m_arAvoidBounds.size();
    // Cells twice as large as a box: the boxes that meet one lie in the 2 x 2 cells nearest
    // its corner.
    int side = 1;
    for (AvoidBound const& b : m_arAvoidBounds)
        side = std::max(side, std::max(b.m_rcBound.Width(), b.m_rcBound.Height()));
    int const cell = side <= (1 << 29) ? 2 * side : 1 << 30;

    m_arOrder.clear();
    for (size_t i = 0; i < n; ++i)
        if (m_arAvoidBounds[i].m_bSelected)
            m_arOrder.push_back((int)i);
    for (size_t i = 0; i < n; ++i)
        if (!m_arAvoidBounds[i].m_bSelected)
            m_arOrder.push_back((int)i);

    // At most one cell a station, at most half the table in use.
    size_t slots = 16;
    while (slots < 2 * n)
        slots *= 2;
    m_arCellKeys.assign(slots, kNoCell);
    m_arCellFirst.resize(slots);
    m_arNextShown.assign(n, -1);
    for (int i : m_arOrder)
    {
        AvoidBound& bound = m_arAvoidBounds[(size_t)i];
        eRect const& r = bound.m_rcBound;
        int const cx = FloorDiv(r.left, cell), cy = FloorDiv(r.top, cell);
        // A box that meets this one starts less than a side away from its corner.
        int const nx = r.left - cx * cell < cell / 2 ? cx - 1 : cx + 1;
        int const ny = r.top - cy * cell < cell / 2 ? cy - 1 : cy + 1;
        int const xs[2] = {cx, nx}, ys[2] = {cy, ny};
        bool blocked = false;
        for (int a = 0; a < 2 && !blocked; ++a)
            for (int b = 0; b < 2 && !blocked; ++b)
            {
                size_t slot = CellSlot(CellKey(xs[a], ys[b]));
                if (m_arCellKeys[slot] == kNoCell)
                    continue;
                for (int j = m_arCellFirst[slot]; j >= 0 && !blocked; j = m_arNextShown[(size_t)j])
                    blocked = Meet(r, m_arAvoidBounds[(size_t)j].m_rcBound);
            }
        bound.m_bVisible = blocked ? 0 : 1;
        if (blocked)
            continue;
        size_t slot = CellSlot(CellKey(cx, cy));
        if (m_arCellKeys[slot] == kNoCell)
        {
            m_arCellKeys[slot] = CellKey(cx, cy);
            m_arCellFirst[slot] = -1;
        }
        m_arNextShown[(size_t)i] = m_arCellFirst[slot];
        m_arCellFirst[slot] = i;
    }
}

int eRenderWorldObjectAvoid::SelectStation(ePoint pixel)
{
    if (!m_bCanSelect || !m_pEngine || !m_pCamera)
        return -1;
    eCoordSys* coordSys = m_pEngine->GetCoordSys();
    if (!coordSys)
        return -1;
    ePoint2D geo;
    eSceneMode mode = m_pCamera->GetSceneMode();
    if (mode == eSM_GLOBE)
    {
        // The camera's ray takes the pixel as it is, y counted from the top row.
        eVector3T<double> origin, dir, hit;
        m_pCamera->PickingRay(pixel.x, pixel.y, origin, dir);
        if (!m_pCamera->IntersectGlobe(origin, dir, hit, 0.0))
            return -1;
        ePoint2D logical, map;
        coordSys->WorldToLogical(eSM_GLOBE, hit, logical);
        coordSys->LogicalToMapPoint(logical, map);
        coordSys->MapToGeo(map, geo);
    }
    else if (mode == eSM_PLANE)
    {
        ePoint2D logical, map;
        if (!m_pEngine->PixelToLogical(pixel, logical, 0.0))
            return -1;
        m_pEngine->LogicalToMap(logical, map);
        coordSys->MapToGeo(map, geo);
    }
    ePoint at = GeoToGrid(geo.x, geo.y);

    for (AvoidBound& bound : m_arBaseBounds)
        bound.m_bSelected = 0;
    for (AvoidBound& bound : m_arAvoidBounds)
        bound.m_bSelected = 0;
    m_bSelectChanged = 0;
    for (size_t i = 0; i < m_arAvoidBounds.size(); ++i)
    {
        AvoidBound& bound = m_arAvoidBounds[i];
        // A hidden station cannot be seen, so it cannot be picked either.
        if (!bound.m_bVisible || !bound.m_rcBound.PtInRect(at))
            continue;
        bound.m_bSelected = 1;
        if (i < m_arBaseBounds.size())
            m_arBaseBounds[i].m_bSelected = 1;
        m_bSelectChanged = 1;
        return (int)i;
    }
    return -1;
}

} // namespace KYR
