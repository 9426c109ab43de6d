// The view: viewport, light, camera.
//
// The camera looks at a point on (or above) the surface from a distance, turned by a
// heading about the local up at that point (0 = north at the top of the screen,
// growing clockwise as seen from above) and tilted by a pitch from straight down (0)
// towards the horizon. On the globe (eSM_GLOBE) the look-at point is given in
// geographic degrees, on the plane map (eSM_PLANE) in map metres; world coordinates
// follow eCoordSys.h.
//
// Camera-relative frame: the reference centre is the look-at point in world
// coordinates (double). Positions handed to shaders are world positions minus the
// reference centre; the relative world matrix is the identity and the relative view
// matrix is the view matrix of the eye seen from that centre, so float precision
// holds on a planet-sized scene.
//
// Window coordinates (Project) follow OpenGL: x to the right, y up from the bottom
// row, depth 0..1. Mouse pixels (PickingRay) count y down from the top row.
#pragma once
#include "eEnums.h"
#include "eMatrix4.h"
#include "eRect.h"
#include "eVector3.h"

namespace KYR
{

class eCoordSys;

// Where the eye is, refreshed whenever the camera changes.
struct eCameraState
{
    double m_dAltitude;  // eye height above the surface (the sphere, or z = 0), metres
    double m_dDistance;  // eye to look-at point, metres
    double m_dLongitude; // eye position: degrees on the globe, map metres on the plane
    double m_dLatitude;
    double m_dHeading; // radians
    double m_dPitch;   // radians
    eCameraState()
        : m_dAltitude(0.0), m_dDistance(0.0), m_dLongitude(0.0), m_dLatitude(0.0), m_dHeading(0.0),
          m_dPitch(0.0)
    {
    }
};

// What the camera looks at.
struct eLookAtState
{
    double m_dLongitude; // degrees on the globe, map x in metres on the plane
    double m_dLatitude;  // degrees on the globe, map y in metres on the plane
    double m_dHeight;    // metres above the surface
    double m_dHeading;   // radians, 0 = north up
    double m_dPitch;     // radians, 0 = looking straight down
    double m_dRange;     // eye to look-at point, metres
    eLookAtState()
        : m_dLongitude(0.0), m_dLatitude(0.0), m_dHeight(0.0), m_dHeading(0.0), m_dPitch(0.0),
          m_dRange(0.0)
    {
    }
};

class eViewport
{
public:
    eViewport() : m_nWidth(800), m_nHeight(600) {}
    eViewport(int width, int height);
    int GetActualWidth() const { return m_nWidth; }
    int GetActualHeight() const { return m_nHeight; }
    // Sizes below one pixel are reported on stderr and ignored.
    void SetSize(int width, int height);

private:
    int m_nWidth;
    int m_nHeight;
};

// A point light. Until SetPosition is called the camera keeps it at the eye.
class eLight
{
public:
    eLight() : m_bFixed(0) {}
    eVector3T<double>& GetPosition() { return m_vPosition; }
    void SetPosition(eVector3T<double> const& position)
    {
        m_vPosition = position;
        m_bFixed = 1;
    }
    // 1 once a position was set; 0 while the light follows the eye.
    unsigned char IsFixed() const { return m_bFixed; }
    void SetFixed(unsigned char fixed) { m_bFixed = fixed; }

private:
    friend class eCamera;
    eVector3T<double> m_vPosition;
    unsigned char m_bFixed;
};

class eFrustum
{
public:
    eFrustum() {}
    virtual ~eFrustum() {}
};

class eCamera
{
public:
    // The camera does not own the viewport; a null viewport is reported and replaced
    // by an 800 x 600 one owned by the camera.
    explicit eCamera(eViewport* viewport);
    virtual ~eCamera();
    eCamera(eCamera const&) = delete;
    eCamera& operator=(eCamera const&) = delete;

    // Switching modes keeps the look-at place: its logical point is converted
    // through the coordinate system (plate carree when none is set). The coordinate
    // system, when set, is switched to the same mode.
    void SetSceneMode(eSceneMode mode);
    eSceneMode GetSceneMode() { return m_eSceneMode; }
    // eDM_3D (the default) unless the application declared a flat view; the globe has no
    // flat view, so in eSM_GLOBE the camera reports eDM_3D whatever was set (eEnums.h).
    eDimensionMode GetDimensionMode()
    {
        return m_eSceneMode == eSM_GLOBE ? eDM_3D : m_eDimensionMode;
    }
    void SetDimensionMode(eDimensionMode mode) { m_eDimensionMode = mode; }
    // Not owned. Used to convert look-at points between modes and to limit the
    // render bounds on the plane.
    void SetCoordSys(eCoordSys* coordSys);
    eCoordSys* GetCoordSys() { return m_pCoordSys; }

    // Looks at a geographic point (degrees) from a distance (metres) with heading and
    // pitch in degrees; height is the look-at point's height above the surface. On
    // the plane map the point goes through the coordinate system's projection.
    void LookAt(double lon, double lat, double distance, double heading, double pitch,
                double height = 0.0);
    // The same with a map point in metres; on the globe it is converted to degrees.
    void LookAtMap(double x, double y, double distance, double heading, double pitch,
                   double height = 0.0);
    // Vertical field of view in degrees (default 30).
    void SetFieldOfView(double degrees);
    double GetFieldOfView() const { return m_dFovY; }
    double GetNearClip();
    double GetFarClip();

    eVector3T<double>& GetReferenceCenter();
    eMatrix4T<float>& GetRelativeWorldMatrix();
    eMatrix4T<float>& GetRelativeViewMatrix();
    eMatrix4T<float>& GetRelativeProjectionMatrix();
    // Maps pixel coordinates (0..width, 0..height, y up from the bottom) to clip space.
    eMatrix4T<float>& GetOrthoWorldMatrix();
    eMatrix4T<double>& GetWorldMatrix();
    eMatrix4T<double>& GetViewMatrix();
    eMatrix4T<double>& GetProjectionMatrix();
    eVector3T<double>& GetCameraPosition();
    eVector3T<double>& GetLookAtPosition();
    eCameraState& GetCameraState();
    eLookAtState& GetLookAtState();

    // World point to window coordinates (x right, y up from the bottom row, depth
    // 0..1). Points behind the eye come out with a depth above 1.
    eVector3T<double> Project(eVector3T<double> const& world);
    // Ray from the eye through the window point (px, height - py): px, py are mouse
    // pixels with y counted from the top row. dir has unit length.
    void PickingRay(int const& px, int const& py, eVector3T<double>& origin,
                    eVector3T<double>& dir);
    // Nearest meeting of a ray with the sphere of radius 6378137 + height (globe) or
    // the plane z = height (plane map), in front of the origin. Returns 0 on a miss.
    virtual unsigned char IntersectGlobe(eVector3T<double>& origin, eVector3T<double>& dir,
                                         eVector3T<double>& hit, double height);
    // Eye to look-at point, metres.
    double GetDistance();
    // Metres per pixel at a distance from the eye, at the centre of the view.
    double DistanceToResolution(double distance);
    // World length of a number of pixels across the screen at a world point.
    double XPixel2WorldLength(eVector3T<double> const& at, int pixels);

    eViewport* GetViewport() { return m_pViewport; }
    // Visible bounds in logical coordinates: on the globe the longitude and latitude
    // range of the visible cap (the whole longitude range when a pole is in view or
    // the view spans the date line); on the plane the visible map metres, limited to
    // the map extent when a coordinate system is set.
    eRect2D& GetRenderBounds();
    eLight* GetLight() { return &m_Light; }

private:
    void Invalidate() { m_bDirty = true; }
    void Update();
    void UpdateRenderBounds();
    // Ray from the eye through a window point (y up from the bottom row).
    void RayThroughWindow(double wx, double wy, eVector3T<double>& origin, eVector3T<double>& dir);
    void GeoToMapPoint(double lon, double lat, double& x, double& y);
    void MapToGeoPoint(double x, double y, double& lon, double& lat);
    void StoreLookAt(char const* caller, double a, double b, double distance, double heading,
                     double pitch, double height);

    eViewport m_OwnViewport;
    eViewport* m_pViewport;
    eCoordSys* m_pCoordSys;
    eLight m_Light;
    eSceneMode m_eSceneMode;
    eDimensionMode m_eDimensionMode = eDM_3D;
    eLookAtState m_LookAt;
    eCameraState m_CameraState;
    double m_dFovY;
    double m_dNear;
    double m_dFar;
    bool m_bDirty;
    bool m_bBoundsDirty;
    int m_nWidth;
    int m_nHeight;

    // Eye frame in world coordinates: right, up, and viewing direction.
    eVector3T<double> m_vRight;
    eVector3T<double> m_vUp;
    eVector3T<double> m_vDirection;
    eVector3T<double> m_vReferenceCenter;
    eVector3T<double> m_vCameraPosition;
    eVector3T<double> m_vLookAtPosition;
    eMatrix4T<float> m_mRelativeWorld;
    eMatrix4T<float> m_mRelativeView;
    eMatrix4T<float> m_mRelativeProjection;
    eMatrix4T<float> m_mOrthoWorld;
    eMatrix4T<double> m_mWorld;
    eMatrix4T<double> m_mView;
    eMatrix4T<double> m_mProjection;
    eRect2D m_rcRenderBounds;
};

} // namespace KYR
