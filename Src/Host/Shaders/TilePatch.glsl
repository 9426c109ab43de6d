// The generic tile patch of the tile objects: a_position.xy runs 0..1 across the tile
// rectangle, x from its left edge, y down from its top edge. u_tileRect (left, top, width,
// height, in geographic degrees) places it; it stands u_relativeHeight metres above the
// ground, and with u_build3D the raster value times u_exagFactor lifts it further.
in vec3 a_position;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform int u_projKind;
uniform float u_relativeHeight;
uniform int u_build3D;
uniform float u_exagFactor;
uniform vec4 u_tileRect;

out vec2 v_geo;

void PlacePatch()
{
    vec2 geo = vec2(u_tileRect.x + a_position.x * u_tileRect.z,
                    u_tileRect.y - a_position.y * u_tileRect.w);
    float height = u_relativeHeight;
    vec2 uv = RasterUV(geo);
    if (u_build3D != 0 && InsideUnitSquare(uv))
    {
        float value = RasterValue(RasterRaw(0, uv));
        if (!isnan(value))
            height += value * u_exagFactor;
    }
    v_geo = geo;
    vec3 world = GeoToWorld(u_projKind, vec3(geo, height));
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(world, 1.0);
}
