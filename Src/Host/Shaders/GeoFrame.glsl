// Placing geographic points for programs whose vertices carry longitude and latitude:
// the local frame at a point, and the horizon test on the globe. Needs GeoProject.glsl.

// East, north and up at (longitude, latitude in degrees), in world axes, by projection
// kind. On the plane map the directions are taken from the projection itself, so that
// north follows the meridians of the conic projections.
void GeoFrame(int kind, vec2 lonLat, out vec3 east, out vec3 north, out vec3 up)
{
    if (kind == 0)
    {
        float lon = lonLat.x * kDegToRad, lat = lonLat.y * kDegToRad;
        east = vec3(-sin(lon), cos(lon), 0.0);
        north = vec3(-sin(lat) * cos(lon), -sin(lat) * sin(lon), cos(lat));
        up = vec3(cos(lat) * cos(lon), cos(lat) * sin(lon), sin(lat));
        return;
    }
    float lat = clamp(lonLat.y, -89.9, 89.9);
    vec3 here = GeoToWorld(kind, vec3(lonLat.x, lat, 0.0));
    east = normalize(GeoToWorld(kind, vec3(lonLat.x + 0.05, lat, 0.0)) - here);
    north = normalize(GeoToWorld(kind, vec3(lonLat.x, lat + 0.05, 0.0)) - here);
    up = vec3(0.0, 0.0, 1.0);
}

// Whether a view-space point on the globe faces the eye: its outward normal points
// towards the eye. On the plane map every point does.
bool FacesEye(int kind, vec3 viewPos, mat4 worldView)
{
    if (kind != 0)
        return true;
    vec3 centre = (worldView * vec4(0.0, 0.0, 0.0, 1.0)).xyz;
    return dot(viewPos - centre, -viewPos) > 0.0;
}
