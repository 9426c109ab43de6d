// Geographic position (longitude, latitude in degrees, height in metres) to a world
// position by projection kind: 0 globe, 1 plate carree, 2 Mercator, 3 Lambert
// conformal conic, 4 Albers equal-area. The plane kinds use the host's default
// parameters: central meridian 0 (105 for the conics), standard parallels 25 and 47,
// origin latitude 0. World "up" is +z on the plane; on the globe x points to (0, 0),
// y to (90 E, 0) and z to the north pole.
const float kEarthRadius = 6378137.0;
const float kDegToRad = 0.017453292519943295;
const float kQuarterPi = 0.7853981633974483;

vec3 GeoToGlobe(vec3 geo)
{
    float lon = geo.x * kDegToRad, lat = geo.y * kDegToRad, r = kEarthRadius + geo.z;
    return vec3(r * cos(lat) * cos(lon), r * cos(lat) * sin(lon), r * sin(lat));
}

vec3 GeoToConic(int kind, vec3 geo)
{
    float p1 = 25.0 * kDegToRad, p2 = 47.0 * kDegToRad;
    float phi = geo.y * kDegToRad;
    float dlon = mod(geo.x - 105.0 + 540.0, 360.0) - 180.0;
    float n, rho, rho0;
    if (kind == 3)
    {
        n = log(cos(p1) / cos(p2)) / log(tan(kQuarterPi + p2 * 0.5) / tan(kQuarterPi + p1 * 0.5));
        float f = cos(p1) * pow(tan(kQuarterPi + p1 * 0.5), n) / n;
        rho = kEarthRadius * f / pow(tan(kQuarterPi + phi * 0.5), n);
        rho0 = kEarthRadius * f;
    }
    else
    {
        n = (sin(p1) + sin(p2)) * 0.5;
        float c = cos(p1) * cos(p1) + 2.0 * n * sin(p1);
        rho = kEarthRadius * sqrt(max(0.0, c - 2.0 * n * sin(phi))) / n;
        rho0 = kEarthRadius * sqrt(c) / n;
    }
    float theta = n * dlon * kDegToRad;
    return vec3(rho * sin(theta), rho0 - rho * cos(theta), geo.z);
}

vec3 GeoToWorld(int kind, vec3 geo)
{
    if (kind == 0)
        return GeoToGlobe(geo);
    if (kind == 1)
        return vec3(kEarthRadius * geo.x * kDegToRad, kEarthRadius * geo.y * kDegToRad, geo.z);
    if (kind == 2)
    {
        float lat = clamp(geo.y, -85.0511, 85.0511) * kDegToRad;
        return vec3(kEarthRadius * geo.x * kDegToRad,
                    kEarthRadius * log(tan(kQuarterPi + lat * 0.5)), geo.z);
    }
    return GeoToConic(kind, geo);
}

// Bearing in degrees, clockwise from north, from geographic point a to b.
float Azimuth(vec2 a, vec2 b)
{
    float lat1 = a.y * kDegToRad, lat2 = b.y * kDegToRad;
    float dlon = (b.x - a.x) * kDegToRad;
    float y = sin(dlon) * cos(lat2);
    float x = cos(lat1) * sin(lat2) - sin(lat1) * cos(lat2) * cos(dlon);
    return mod(degrees(atan(y, x)) + 360.0, 360.0);
}
