// Viewport and camera of the reference host.
#include "eCamera.h"
#include "eCoordSys.h"
#include "eMathEngine.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace KYR
{

namespace
{
double const kRadius = eMathEngine::EARTH_RADIUS;
double const kDegToRad = eMathEngine::DEG_TO_RAD;
double const kRadToDeg = eMathEngine::RAD_TO_DEG;
double const kPi = eMathEngine::PI;
// Largest pitch: just short of the horizon, so the view direction keeps a downward part.
double const kMaxPitchDeg = 89.5;
// Height above the globe's surface that the far plane keeps in view (halo, volumes).
double const kFarShell = 0.1 * kRadius;
// Samples along each viewport edge and across the inside when finding render bounds.
int const kEdgeSamples = 32;
int const kGridSamples = 8;
int const kHorizonSamples = 144;

typedef eVector3T<double> Vec3;

bool Finite(double v)
{
    return std::isfinite(v);
}

// Grows [lo, hi] ranges of longitude and latitude.
struct GeoCollector
{
    std::vector<double> m_arLon;
    double m_dLatMin = 1e300;
    double m_dLatMax = -1e300;
    void Add(ePoint2D const& p)
    {
        m_arLon.push_back(p.x);
        m_dLatMin = std::min(m_dLatMin, p.y);
        m_dLatMax = std::max(m_dLatMax, p.y);
    }
};
} // namespace

// ------------------------------------------------------------------- eViewport

eViewport::eViewport(int width, int height) : m_nWidth(800), m_nHeight(600)
{
    SetSize(width, height);
}

void eViewport::SetSize(int width, int height)
{
    if (width < 1 || height < 1)
    {
        std::fprintf(stderr, "eViewport: size %d x %d is not a drawable size, keeping %d x %d\n",
                     width, height, m_nWidth, m_nHeight);
        return;
    }
    m_nWidth = width;
    m_nHeight = height;
}

// --------------------------------------------------------------------- eCamera

eCamera::eCamera(eViewport* viewport)
    : m_pViewport(viewport), m_pCoordSys(nullptr), m_eSceneMode(eSM_GLOBE), m_dFovY(30.0),
      m_dNear(1.0), m_dFar(1.0), m_bDirty(true), m_bBoundsDirty(true), m_nWidth(0), m_nHeight(0)
{
    if (!m_pViewport)
    {
        std::fprintf(stderr, "eCamera: no viewport given, using an 800 x 600 one\n");
        m_pViewport = &m_OwnViewport;
    }
    LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
}

eCamera::~eCamera() {}

void eCamera::GeoToMapPoint(double lon, double lat, double& x, double& y)
{
    ePoint2D map;
    if (m_pCoordSys && m_pCoordSys->GeoToMap(ePoint2D(lon, lat), map))
    {
        x = map.x;
        y = map.y;
        return;
    }
    if (m_pCoordSys)
        std::fprintf(stderr, "eCamera: (%g, %g) has no map point, using plate carree\n", lon, lat);
    x = kRadius * lon * kDegToRad;
    y = kRadius * lat * kDegToRad;
}

void eCamera::MapToGeoPoint(double x, double y, double& lon, double& lat)
{
    ePoint2D geo;
    if (m_pCoordSys && m_pCoordSys->MapToGeo(ePoint2D(x, y), geo))
    {
        lon = geo.x;
        lat = geo.y;
        return;
    }
    if (m_pCoordSys)
        std::fprintf(stderr, "eCamera: map point (%g, %g) has no geographic point\n", x, y);
    lon = x / kRadius * kRadToDeg;
    lat = std::max(-90.0, std::min(90.0, y / kRadius * kRadToDeg));
}

void eCamera::SetSceneMode(eSceneMode mode)
{
    if (mode != eSM_GLOBE && mode != eSM_PLANE)
    {
        std::fprintf(stderr, "eCamera: unknown scene mode %d\n", (int)mode);
        return;
    }
    if (mode != m_eSceneMode)
    {
        double a = m_LookAt.m_dLongitude, b = m_LookAt.m_dLatitude;
        if (mode == eSM_PLANE)
            GeoToMapPoint(a, b, m_LookAt.m_dLongitude, m_LookAt.m_dLatitude);
        else
            MapToGeoPoint(a, b, m_LookAt.m_dLongitude, m_LookAt.m_dLatitude);
        m_eSceneMode = mode;
    }
    if (m_pCoordSys)
        m_pCoordSys->SetSceneMode(mode);
    Invalidate();
}

void eCamera::SetCoordSys(eCoordSys* coordSys)
{
    m_pCoordSys = coordSys;
    if (m_pCoordSys)
        m_pCoordSys->SetSceneMode(m_eSceneMode);
    Invalidate();
}

void eCamera::LookAt(double lon, double lat, double distance, double heading, double pitch,
                     double height)
{
    if (!Finite(lon) || !(lat >= -90.0 && lat <= 90.0))
    {
        std::fprintf(stderr, "eCamera::LookAt: (%g, %g) is not a geographic point\n", lon, lat);
        return;
    }
    if (m_eSceneMode == eSM_PLANE)
    {
        double x = 0.0, y = 0.0;
        GeoToMapPoint(lon, lat, x, y);
        LookAtMap(x, y, distance, heading, pitch, height);
        return;
    }
    StoreLookAt("LookAt", lon, lat, distance, heading, pitch, height);
}

void eCamera::LookAtMap(double x, double y, double distance, double heading, double pitch,
                        double height)
{
    if (!Finite(x) || !Finite(y))
    {
        std::fprintf(stderr, "eCamera::LookAtMap: (%g, %g) is not a map point\n", x, y);
        return;
    }
    if (m_eSceneMode == eSM_GLOBE)
    {
        double lon = 0.0, lat = 0.0;
        MapToGeoPoint(x, y, lon, lat);
        LookAt(lon, lat, distance, heading, pitch, height);
        return;
    }
    StoreLookAt("LookAtMap", x, y, distance, heading, pitch, height);
}

// The look-at state in the scene mode's own units (degrees on the globe, map metres on the
// plane); unusable values are reported and leave the view as it was.
void eCamera::StoreLookAt(char const* caller, double a, double b, double distance, double heading,
                          double pitch, double height)
{
    if (!(distance > 0.0) || !Finite(distance) || !Finite(heading) || !Finite(pitch) ||
        !Finite(height))
    {
        std::fprintf(stderr,
                     "eCamera::%s: distance %g, heading %g, pitch %g, height %g are not usable\n",
                     caller, distance, heading, pitch, height);
        return;
    }
    m_LookAt.m_dLongitude = a;
    m_LookAt.m_dLatitude = b;
    m_LookAt.m_dHeight = height;
    m_LookAt.m_dHeading = heading * kDegToRad;
    m_LookAt.m_dPitch = std::max(0.0, std::min(kMaxPitchDeg, pitch)) * kDegToRad;
    m_LookAt.m_dRange = distance;
    Invalidate();
}

void eCamera::SetFieldOfView(double degrees)
{
    if (!(degrees > 1.0 && degrees < 170.0))
    {
        std::fprintf(stderr, "eCamera: field of view %g degrees is outside (1, 170)\n", degrees);
        return;
    }
    m_dFovY = degrees;
    Invalidate();
}

void eCamera::Update()
{
    int w = m_pViewport->GetActualWidth();
    int h = m_pViewport->GetActualHeight();
    if (!m_bDirty && w == m_nWidth && h == m_nHeight)
        return;
    m_nWidth = w;
    m_nHeight = h;
    m_bDirty = false;
    m_bBoundsDirty = true;

    // Local frame at the look-at point: up, east, north.
    Vec3 up, east, north;
    if (m_eSceneMode == eSM_GLOBE)
    {
        double lon = m_LookAt.m_dLongitude * kDegToRad;
        double lat = m_LookAt.m_dLatitude * kDegToRad;
        up = eMathEngine::SphericalToCartesian(lon, lat, 1.0);
        east = Vec3(-std::sin(lon), std::cos(lon), 0.0);
        north = up.Cross(east);
        m_vLookAtPosition = up * (kRadius + m_LookAt.m_dHeight);
    }
    else
    {
        up = Vec3(0.0, 0.0, 1.0);
        east = Vec3(1.0, 0.0, 0.0);
        north = Vec3(0.0, 1.0, 0.0);
        m_vLookAtPosition = Vec3(m_LookAt.m_dLongitude, m_LookAt.m_dLatitude, m_LookAt.m_dHeight);
    }
    double hd = m_LookAt.m_dHeading, pt = m_LookAt.m_dPitch;
    Vec3 forward = north * std::cos(hd) + east * std::sin(hd);
    m_vDirection = up * -std::cos(pt) + forward * std::sin(pt);
    m_vUp = forward * std::cos(pt) + up * std::sin(pt);
    m_vRight = m_vDirection.Cross(m_vUp);
    m_vCameraPosition = m_vLookAtPosition - m_vDirection * m_LookAt.m_dRange;
    m_vReferenceCenter = m_vLookAtPosition;

    // View matrices: rows right, up, -direction.
    auto fillView = [this](eMatrix4T<double>& m, Vec3 const& eye)
    {
        Vec3 const& s = m_vRight;
        Vec3 const& u = m_vUp;
        Vec3 const& d = m_vDirection;
        m.SetIdentity();
        m.m[0] = s.x;
        m.m[4] = s.y;
        m.m[8] = s.z;
        m.m[12] = -s.Dot(eye);
        m.m[1] = u.x;
        m.m[5] = u.y;
        m.m[9] = u.z;
        m.m[13] = -u.Dot(eye);
        m.m[2] = -d.x;
        m.m[6] = -d.y;
        m.m[10] = -d.z;
        m.m[14] = d.Dot(eye);
    };
    fillView(m_mView, m_vCameraPosition);
    eMatrix4T<double> relView;
    fillView(relView, m_vCameraPosition - m_vReferenceCenter);
    m_mRelativeView = eMatrix4T<float>(relView);
    m_mWorld.SetIdentity();
    m_mRelativeWorld.SetIdentity();

    // Clip planes: the near plane follows the eye's height, the far plane keeps the
    // whole globe (with a shell above it) or the whole map in view.
    double dist = m_LookAt.m_dRange;
    double altitude = 0.0;
    if (m_eSceneMode == eSM_GLOBE)
    {
        double eyeRadius = m_vCameraPosition.Length();
        altitude = eyeRadius - kRadius;
        m_dFar = eyeRadius + kRadius + kFarShell;
    }
    else
    {
        altitude = m_vCameraPosition.z;
        m_dFar = dist + 2.0 * eMathEngine::EARTH_CIRCUMFERENCE;
    }
    m_dNear = std::max(1.0, std::min(0.05 * std::fabs(altitude), 0.5 * dist));

    double aspect = (double)w / (double)h;
    double f = 1.0 / std::tan(m_dFovY * kDegToRad * 0.5);
    m_mProjection.SetIdentity();
    m_mProjection.m[0] = f / aspect;
    m_mProjection.m[5] = f;
    m_mProjection.m[10] = (m_dFar + m_dNear) / (m_dNear - m_dFar);
    m_mProjection.m[11] = -1.0;
    m_mProjection.m[14] = 2.0 * m_dFar * m_dNear / (m_dNear - m_dFar);
    m_mProjection.m[15] = 0.0;
    m_mRelativeProjection = eMatrix4T<float>(m_mProjection);

    m_mOrthoWorld.SetIdentity();
    m_mOrthoWorld.m[0] = 2.0f / (float)w;
    m_mOrthoWorld.m[5] = 2.0f / (float)h;
    m_mOrthoWorld.m[10] = -1.0f;
    m_mOrthoWorld.m[12] = -1.0f;
    m_mOrthoWorld.m[13] = -1.0f;

    m_CameraState.m_dAltitude = altitude;
    m_CameraState.m_dDistance = dist;
    m_CameraState.m_dHeading = hd;
    m_CameraState.m_dPitch = pt;
    if (m_eSceneMode == eSM_GLOBE)
    {
        Vec3 s = eMathEngine::CartesianToSpherical(m_vCameraPosition.x, m_vCameraPosition.y,
                                                   m_vCameraPosition.z);
        m_CameraState.m_dLongitude = s.x * kRadToDeg;
        m_CameraState.m_dLatitude = s.y * kRadToDeg;
    }
    else
    {
        m_CameraState.m_dLongitude = m_vCameraPosition.x;
        m_CameraState.m_dLatitude = m_vCameraPosition.y;
    }
    if (!m_Light.IsFixed())
        m_Light.m_vPosition = m_vCameraPosition;
}

double eCamera::GetNearClip()
{
    Update();
    return m_dNear;
}

double eCamera::GetFarClip()
{
    Update();
    return m_dFar;
}

eVector3T<double>& eCamera::GetReferenceCenter()
{
    Update();
    return m_vReferenceCenter;
}

eMatrix4T<float>& eCamera::GetRelativeWorldMatrix()
{
    Update();
    return m_mRelativeWorld;
}

eMatrix4T<float>& eCamera::GetRelativeViewMatrix()
{
    Update();
    return m_mRelativeView;
}

eMatrix4T<float>& eCamera::GetRelativeProjectionMatrix()
{
    Update();
    return m_mRelativeProjection;
}

eMatrix4T<float>& eCamera::GetOrthoWorldMatrix()
{
    Update();
    return m_mOrthoWorld;
}

eMatrix4T<double>& eCamera::GetWorldMatrix()
{
    Update();
    return m_mWorld;
}

eMatrix4T<double>& eCamera::GetViewMatrix()
{
    Update();
    return m_mView;
}

eMatrix4T<double>& eCamera::GetProjectionMatrix()
{
    Update();
    return m_mProjection;
}

eVector3T<double>& eCamera::GetCameraPosition()
{
    Update();
    return m_vCameraPosition;
}

eVector3T<double>& eCamera::GetLookAtPosition()
{
    Update();
    return m_vLookAtPosition;
}

eCameraState& eCamera::GetCameraState()
{
    Update();
    return m_CameraState;
}

eLookAtState& eCamera::GetLookAtState()
{
    Update();
    return m_LookAt;
}

eVector3T<double> eCamera::Project(eVector3T<double> const& world)
{
    Update();
    eVector4T<double> clip =
        m_mProjection * (m_mView * eVector4T<double>(world.x, world.y, world.z, 1.0));
    double invW = clip.w != 0.0 ? 1.0 / clip.w : 0.0;
    return Vec3((clip.x * invW + 1.0) * 0.5 * m_nWidth, (clip.y * invW + 1.0) * 0.5 * m_nHeight,
                (clip.z * invW + 1.0) * 0.5);
}

void eCamera::RayThroughWindow(double wx, double wy, eVector3T<double>& origin,
                               eVector3T<double>& dir)
{
    double t = std::tan(m_dFovY * kDegToRad * 0.5);
    double aspect = (double)m_nWidth / (double)m_nHeight;
    double nx = 2.0 * wx / m_nWidth - 1.0;
    double ny = 2.0 * wy / m_nHeight - 1.0;
    origin = m_vCameraPosition;
    dir = m_vDirection + m_vRight * (nx * t * aspect) + m_vUp * (ny * t);
    dir.Normalize();
}

void eCamera::PickingRay(int const& px, int const& py, eVector3T<double>& origin,
                         eVector3T<double>& dir)
{
    Update();
    RayThroughWindow((double)px, (double)(m_nHeight - py), origin, dir);
}

unsigned char eCamera::IntersectGlobe(eVector3T<double>& origin, eVector3T<double>& dir,
                                      eVector3T<double>& hit, double height)
{
    Vec3 d = dir;
    if (!(d.Normalize() > 0.0) || !Finite(d.x + d.y + d.z) ||
        !Finite(origin.x + origin.y + origin.z))
    {
        std::fprintf(stderr, "eCamera::IntersectGlobe: the ray has no usable direction\n");
        return 0;
    }
    double t = 0.0;
    if (m_eSceneMode == eSM_PLANE)
    {
        if (std::fabs(d.z) < 1e-15)
            return 0;
        t = (height - origin.z) / d.z;
        if (t < 0.0)
            return 0;
    }
    else
    {
        // Distance along the ray to the point nearest the centre, then half the chord;
        // measured from that point, so no large numbers cancel.
        double r = kRadius + height;
        double b = -origin.Dot(d);
        Vec3 closest = origin + d * b;
        double h2 = r * r - closest.SquaredLength();
        if (h2 < 0.0)
            return 0;
        double half = std::sqrt(h2);
        t = b - half;
        if (t < 0.0)
            t = b + half; // the origin is inside the sphere
        if (t < 0.0)
            return 0;
    }
    hit = origin + d * t;
    return 1;
}

double eCamera::GetDistance()
{
    Update();
    return (m_vCameraPosition - m_vLookAtPosition).Length();
}

double eCamera::DistanceToResolution(double distance)
{
    Update();
    return 2.0 * distance * std::tan(m_dFovY * kDegToRad * 0.5) / m_nHeight;
}

double eCamera::XPixel2WorldLength(eVector3T<double> const& at, int pixels)
{
    Update();
    double depth = (at - m_vCameraPosition).Dot(m_vDirection);
    if (!(depth > 0.0))
        depth = GetDistance();
    return pixels * DistanceToResolution(depth);
}

eRect2D& eCamera::GetRenderBounds()
{
    Update();
    if (m_bBoundsDirty)
    {
        UpdateRenderBounds();
        m_bBoundsDirty = false;
    }
    return m_rcRenderBounds;
}

void eCamera::UpdateRenderBounds()
{
    // Window points: dense along the border (where the extremes of a region lie),
    // coarse inside.
    std::vector<ePoint2D> arWindow;
    for (int i = 0; i <= kEdgeSamples; ++i)
    {
        double fx = (double)m_nWidth * i / kEdgeSamples;
        double fy = (double)m_nHeight * i / kEdgeSamples;
        arWindow.push_back(ePoint2D(fx, 0.0));
        arWindow.push_back(ePoint2D(fx, m_nHeight));
        arWindow.push_back(ePoint2D(0.0, fy));
        arWindow.push_back(ePoint2D(m_nWidth, fy));
    }
    for (int i = 1; i < kGridSamples; ++i)
        for (int j = 1; j < kGridSamples; ++j)
            arWindow.push_back(ePoint2D((double)m_nWidth * i / kGridSamples,
                                        (double)m_nHeight * j / kGridSamples));

    if (m_eSceneMode == eSM_PLANE)
    {
        eRect2D r;
        bool first = true;
        for (ePoint2D const& w : arWindow)
        {
            Vec3 o, d, hit;
            RayThroughWindow(w.x, w.y, o, d);
            if (!IntersectGlobe(o, d, hit, 0.0))
                hit = o + d * m_dFar; // above the horizon: as far as anything is drawn
            if (first)
                r = eRect2D(hit.x, hit.y, hit.x, hit.y);
            first = false;
            r.left = std::min(r.left, hit.x);
            r.right = std::max(r.right, hit.x);
            r.top = std::max(r.top, hit.y);
            r.bottom = std::min(r.bottom, hit.y);
        }
        if (m_pCoordSys)
            r.IntersectRect(m_pCoordSys->GetPrjCoordSys().GetProjection()->GetMapBounds());
        m_rcRenderBounds = r;
        return;
    }

    GeoCollector geo;
    bool missed = false;
    auto addWorld = [&geo](Vec3 const& p)
    {
        Vec3 s = eMathEngine::CartesianToSpherical(p.x, p.y, p.z);
        geo.Add(ePoint2D(s.x * kRadToDeg, s.y * kRadToDeg));
    };
    for (ePoint2D const& w : arWindow)
    {
        Vec3 o, d, hit;
        RayThroughWindow(w.x, w.y, o, d);
        if (IntersectGlobe(o, d, hit, 0.0))
            addWorld(hit);
        else
            missed = true;
    }
    // Pixels off the globe: the horizon circle bounds what is seen there.
    auto inView = [this](Vec3 const& p)
    {
        Vec3 w = Project(p);
        return w.z >= 0.0 && w.z <= 1.0 && w.x >= -0.5 && w.x <= m_nWidth + 0.5 && w.y >= -0.5 &&
               w.y <= m_nHeight + 0.5;
    };
    double eyeRadius = m_vCameraPosition.Length();
    if (missed && eyeRadius > kRadius)
    {
        Vec3 axis = m_vCameraPosition / eyeRadius;
        Vec3 a = std::fabs(axis.z) < 0.9 ? Vec3(0.0, 0.0, 1.0).Cross(axis).Normalized()
                                         : Vec3(1.0, 0.0, 0.0).Cross(axis).Normalized();
        Vec3 b = axis.Cross(a);
        Vec3 centre = axis * (kRadius * kRadius / eyeRadius);
        double rh = kRadius * std::sqrt(1.0 - (kRadius * kRadius) / (eyeRadius * eyeRadius));
        for (int i = 0; i < kHorizonSamples; ++i)
        {
            double ang = 2.0 * kPi * i / kHorizonSamples;
            Vec3 q = centre + (a * std::cos(ang) + b * std::sin(ang)) * rh;
            if (inView(q))
                addWorld(q);
        }
    }
    // A pole in view opens the whole longitude range.
    bool north = false, south = false;
    for (int s = -1; s <= 1; s += 2)
    {
        Vec3 pole(0.0, 0.0, s * kRadius);
        if (pole.Dot(m_vCameraPosition) > kRadius * kRadius && inView(pole))
            (s > 0 ? north : south) = true;
    }
    if (geo.m_arLon.empty())
    {
        // Nothing of the surface met: empty, or only a pole, which is unlikely.
        if (north || south)
            m_rcRenderBounds = eRect2D(-180.0, 90.0, 180.0, -90.0);
        else
            m_rcRenderBounds.SetEmpty();
        return;
    }
    double top = north ? 90.0 : geo.m_dLatMax;
    double bottom = south ? -90.0 : geo.m_dLatMin;
    double left = -180.0, right = 180.0;
    if (!north && !south)
    {
        // The longitudes cover a circular range: it is the complement of the widest
        // gap between neighbours. When that gap is not the one across the date line
        // the view spans the date line, and the whole range is reported.
        std::vector<double>& lon = geo.m_arLon;
        std::sort(lon.begin(), lon.end());
        double wrapGap = lon.front() + 360.0 - lon.back();
        double widest = 0.0;
        for (size_t i = 1; i < lon.size(); ++i)
            widest = std::max(widest, lon[i] - lon[i - 1]);
        if (wrapGap >= widest)
        {
            left = lon.front();
            right = lon.back();
        }
    }
    m_rcRenderBounds = eRect2D(left, top, right, bottom);
}

} // namespace KYR
