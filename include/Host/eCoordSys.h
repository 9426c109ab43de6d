// Coordinate systems of the host: projections between geographic degrees and map
// metres, and the link between geographic, map, logical and world coordinates.
//
// Conventions used throughout the host:
// - Geographic points are ePoint2D(x = longitude, y = latitude) in degrees.
// - Map points are projected metres of the current projection.
// - Logical coordinates depend on the scene mode: on the globe (eSM_GLOBE) they are
//   geographic degrees; on the plane map (eSM_PLANE) they are map metres.
// - World coordinates: on the globe a point (lon, lat, height) lies at
//   x = r cos(lat) cos(lon), y = r cos(lat) sin(lon), z = r sin(lat) with
//   r = 6378137.0 + height (the north pole is +z); on the plane map the world point
//   is (map x, map y, height), so world "up" is +z.
// - Levels: level 0 shows the whole world (360 degrees) over 256 pixels, that is
//   40075016.68557849 / 256 metres per pixel; every level halves the resolution.
#pragma once
#include "eEnums.h"
#include "ePoint.h"
#include "eRect.h"
#include "eVector3.h"

namespace KYR
{

// One map projection with its parameters. Every projection works on a sphere of
// radius 6378137.0 except 43004, which is the ellipsoidal Mercator of WGS84
// (semi-major axis 6378137.0, flattening 1 / 298.257223563). The two Mercators
// clamp latitudes to +-85.0511287798 degrees in both directions.
//
// Supported type codes (tagPJObjectType):
//   43000 plate carree: x = R * lon, y = R * lat (radians)
//   43004 Mercator on the WGS84 ellipsoid
//   43045 spherical ("web") Mercator
//   43020 Lambert conformal conic, spherical
//   43007 Albers equal-area conic, spherical
// Setting a type resets the parameters to that type's defaults: central meridian
// 0 for the cylinders; central meridian 105, origin latitude 0 and standard
// parallels 25 and 47 for the two conics.
class eProjection
{
public:
    eProjection();
    explicit eProjection(int type);
    virtual ~eProjection();

    int GetProjectionType() const { return m_nType; }
    // Returns 0, with a message on stderr, for an unknown code; the type stays.
    unsigned char SetProjectionType(int type);
    static unsigned char IsSupportedType(int type);

    // Parameters in degrees.
    void SetCentralMeridian(double lon);
    double GetCentralMeridian() const { return m_dCentralMeridian; }
    void SetOriginLatitude(double lat);
    double GetOriginLatitude() const { return m_dOriginLatitude; }
    // Returns 0 for parallels that give no conic (opposite, or at a pole).
    unsigned char SetStandardParallels(double lat1, double lat2);
    double GetStandardParallel1() const { return m_dStandardParallel1; }
    double GetStandardParallel2() const { return m_dStandardParallel2; }

    // Geographic degrees to map metres and back, in place. Returns 0 and leaves the
    // point as it was when it lies outside the projection's domain (a latitude
    // beyond +-90, the pole opposite a conic's apex, NaN).
    unsigned char Forward(ePoint2D& point) const;
    unsigned char Inverse(ePoint2D& point) const;

    // Map extent of the projected world (the Mercators up to +-85.0511 degrees,
    // the conics sampled over the globe without the pole they cannot reach).
    eRect2D GetMapBounds() const;

private:
    void ResetParameters();
    void UpdateConstants();

    int m_nType;
    double m_dCentralMeridian;
    double m_dOriginLatitude;
    double m_dStandardParallel1;
    double m_dStandardParallel2;
    // Constants of the conics, derived from the parameters.
    double m_dConeN;
    double m_dConeF; // Lambert: F; Albers: C
    double m_dConeRho0;
    mutable eRect2D m_rcMapBounds;
    mutable bool m_bBoundsValid;
};

// A projected coordinate system: one projection applied to arrays of points.
class ePrjCoordSys
{
public:
    ePrjCoordSys();
    explicit ePrjCoordSys(int type);
    virtual ~ePrjCoordSys();

    eProjection* GetProjection() { return &m_Projection; }
    eProjection const* GetProjection() const { return &m_Projection; }
    // The projection type code (tagPJObjectType).
    int GetTypeID() const { return m_Projection.GetProjectionType(); }
    // Geographic degrees (x = lon, y = lat) to map metres, in place. Returns 1 when
    // every point converted; points that cannot be converted are left unchanged.
    unsigned char Forward(ePoint2D* points, int count);
    // Map metres to geographic degrees, in place; same result rule as Forward.
    unsigned char Inverse(ePoint2D* points, int count);
    // An unknown code is reported on stderr and leaves the projection as it was.
    void SetProjectionType(int type);

private:
    eProjection m_Projection;
};

class eCoordSys
{
public:
    // Plate carree on the globe by default.
    eCoordSys();
    explicit eCoordSys(int projectionType, eSceneMode mode = eSM_GLOBE);
    virtual ~eCoordSys();

    // The scene mode decides what logical coordinates mean for the operations
    // without a mode argument (the virtual ones, GetBounds, GetIndexBounds). The
    // camera keeps this in step with its own scene mode.
    void SetSceneMode(eSceneMode mode);
    eSceneMode GetSceneMode() const { return m_eSceneMode; }

    // Geographic degrees <-> map metres through the projection. Return 0 (output
    // untouched) when the point is outside the projection's domain.
    unsigned char GeoToMap(ePoint2D const& geo, ePoint2D& map);
    unsigned char MapToGeo(ePoint2D const& map, ePoint2D& geo);
    // Logical point of the given scene mode to world coordinates, height in metres.
    void LogicalToWorld(eSceneMode mode, ePoint2D const& logical, eVector3T<double>& world,
                        double height);
    // World to logical; the height is dropped.
    void WorldToLogical(eSceneMode mode, eVector3T<double> const& world, ePoint2D& logical);
    // World length of a number of pixels at a resolution in metres per pixel. World
    // units are metres in both modes.
    double PixelToWorld(eSceneMode mode, double pixels, double resolution);
    // Resolution of level 0 in metres per pixel.
    double GetRefResolution();
    // Map extent of the world in map metres, in both scene modes: the projection's
    // extent. MapToLogicalRect turns it into the logical extent (GetLogicalBounds), so a
    // picture of the whole Earth handed through the two covers the whole globe.
    eRect2D GetBounds();
    // Logical extent of the world: (-180, 90, 180, -90) on the globe, the map extent on
    // the plane.
    eRect2D GetLogicalBounds();
    // The square that the level 0 tile covers, in logical coordinates:
    // (-180, 180, 180, -180) on the globe; on the plane the square of half side
    // 20037508.342789244 metres (half the equator) around the map origin.
    eRect2D GetIndexBounds();
    ePrjCoordSys& GetPrjCoordSys() { return m_PrjCoordSys; }

    // Nearest level of a resolution in metres per pixel, clamped to 0..24.
    virtual int ResolutionToLevel(double resolution);
    virtual double LevelToResolution(int level);
    // Logical to map metres: the projection on the globe, unchanged on the plane.
    // In and out may be the same object.
    virtual void LogicalToMapPoint(ePoint2D& logical, ePoint2D& map);
    // Bounding rectangle of the converted rectangle (edges are sampled, so curved
    // images of the conics are covered).
    virtual void LogicalToMapRect(eRect2D& logical, eRect2D& map);
    // Map length to logical length: degrees of arc along the equator on the globe,
    // unchanged on the plane.
    virtual double MapLengthToLogical(double length);
    virtual void MapToLogicalPoint(ePoint2D& map, ePoint2D& logical);
    // On the globe a rectangle that holds the whole map extent (GetBounds) gives the
    // whole globe, also where the projection cannot reach the poles (the Mercators stop
    // at 85.05 degrees, the conics short of one pole); other rectangles go through the
    // inverse projection as LogicalToMapRect does. Unchanged on the plane.
    virtual void MapToLogicalRect(eRect2D& map, eRect2D& logical);

private:
    ePrjCoordSys m_PrjCoordSys;
    eSceneMode m_eSceneMode;
};

// A drawing surface; effects reach the coordinate system through it. The canvas
// does not own the coordinate system.
class eCanvas
{
public:
    explicit eCanvas(eCoordSys* coordSys = nullptr) : m_pCoordSys(coordSys) {}
    virtual ~eCanvas() {}
    eCoordSys* GetCoordSys() { return m_pCoordSys; }
    void SetCoordSys(eCoordSys* coordSys) { m_pCoordSys = coordSys; }

private:
    eCoordSys* m_pCoordSys;
};

} // namespace KYR
