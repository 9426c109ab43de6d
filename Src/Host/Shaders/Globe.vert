#version 330 compatibility
// roles: u_elevation u_shadowMap u_viewport u_sunSpace u_heightBase u_heightScale u_earthMap u_cameraPosition u_sunPosition u_brightness u_spotSize u_lightFactor u_ambientColor u_ambientSHLightColor u_lightColor u_sunDirection u_spotColor u_shCoefficients u_shFirstOrder u_heightLift u_useShadow u_pass
// The globe mesh: a_position is (longitude, latitude in degrees, height step 0..255).
// Each vertex is placed at its own longitude and latitude; the geometry stage turns the
// triangles' outside to the front.
const float kEarthRadius = 6378137.0;
const float kDegToRad = 0.017453292519943295;

in vec3 a_position;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform float u_heightBase;  // metres between the Earth and the lifted relief sphere
uniform float u_heightScale; // metres per height step
uniform float u_heightLift;  // extra metres on every vertex

out vec3 g_world; // world position (absolute)
out vec2 g_geo;   // longitude, latitude

void main()
{
    vec2 geo = a_position.xy;
    // The relief stands on a sphere lifted by the height base; scaling that sphere back
    // onto the Earth keeps step 0 on the surface and shrinks the relief in proportion.
    float relief = a_position.z * u_heightScale * kEarthRadius / (kEarthRadius + u_heightBase);
    float r = kEarthRadius + relief + u_heightLift;
    float lon = geo.x * kDegToRad, lat = geo.y * kDegToRad;
    vec3 world = vec3(r * cos(lat) * cos(lon), r * cos(lat) * sin(lon), r * sin(lat));
    g_world = world;
    g_geo = geo;
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(world, 1.0);
}
