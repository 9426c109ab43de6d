#version 330 compatibility
// roles: u_sunDirection
// Fills the two targets of the weighted transparency: the lit colour, premultiplied by
// `alpha` and weighted by depth, adds into target 0; `alpha` goes to target 1, whose blending
// multiplies the transmittance by (1 - alpha). Both sides of the surface are lit.

in vec3 v_normal;
in vec3 v_eye;

uniform vec3 u_sunDirection; // eye space, towards the sun
uniform vec4 u_ambient;
uniform vec4 u_diffuse;
uniform vec4 u_specular;
uniform float u_shininess;
uniform float alpha;
uniform float uDepthScale;
uniform mat4 u_projectionMatrix;

layout(location = 0) out vec4 accumulated;
layout(location = 1) out vec4 revealage;

void main()
{
    vec3 toEye = normalize(-v_eye);
    vec3 n = normalize(v_normal);
    if (dot(n, toEye) < 0.0)
        n = -n;
    vec3 toSun = length(u_sunDirection) > 0.0 ? normalize(u_sunDirection) : toEye;
    float lambert = max(dot(n, toSun), 0.0);
    float highlight = lambert > 0.0
                          ? pow(max(dot(n, normalize(toSun + toEye)), 0.0), max(u_shininess, 1.0))
                          : 0.0;
    vec3 colour = u_diffuse.rgb * (u_ambient.rgb + lambert) + u_specular.rgb * highlight;

    // The weight falls with the distance in units of the near plane's, so that nearer layers
    // count more; its range stays well inside half floats for a handful of layers.
    float near = u_projectionMatrix[3][2] / (u_projectionMatrix[2][2] - 1.0);
    near = near > 0.0 ? near : 1.0;
    float ratio = near / max(-v_eye.z, near);
    float weight = clamp(1.0e4 * pow(ratio, 4.0 * uDepthScale), 1.0e-2, 3.0e3);

    float a = clamp(alpha, 0.0, 1.0);
    accumulated = vec4(colour * a, a) * weight;
    revealage = vec4(a);
}
