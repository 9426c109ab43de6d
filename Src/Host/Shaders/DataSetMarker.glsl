// Shared by the pulse and density marker programs: where a marker stands in eye space, how
// large it is in metres at the look-at point, and the corner bytes it carries. Positions
// come either local to the set's anchor (placed by u_worldMatrix) or as a world position in
// two floats, high and low, from which the reference centre (split alike) is taken away
// part by part before the two are added, so that nothing large is added in single floats.
uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform float u_earthPixels;
uniform float u_curTime;
uniform float u_startTime;
uniform float u_endTime;
uniform float u_traceTime;
uniform float u_opacity;
uniform vec3 u_refHigh;
uniform vec3 u_refLow;

const float kEarthCircumference = 40075016.68557849;

vec4 LocalToEye(vec3 p)
{
    return u_viewMatrix * u_worldMatrix * vec4(p, 1.0);
}

vec4 TwoFloatToEye(vec3 high, vec3 low)
{
    vec3 p = (high - u_refHigh) + (low - u_refLow);
    return u_viewMatrix * u_worldMatrix * vec4(p, 1.0);
}

// Half the marker's width in metres: sizes are pixels at the look-at point.
float HalfSizeMetres(float pixels)
{
    return 0.5 * pixels * kEarthCircumference / max(u_earthPixels, 1e-6);
}

// A byte carried in a signed element (arriving as -128..127), read back as 0..255.
float UnsignedByte(float b)
{
    return b < 0.0 ? b + 256.0 : b;
}

// How strongly a density marker of time stamp t shows at the clock: from its time on, fading
// to nothing over u_traceTime; never outside u_startTime..u_endTime.
float DensityFade(float t)
{
    if (t > u_curTime || t < u_startTime || t > u_endTime)
        return 0.0;
    return clamp(1.0 - (u_curTime - t) / max(u_traceTime, 1e-6), 0.0, 1.0);
}
