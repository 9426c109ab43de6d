#version 330 compatibility
// roles: u_projectionMode u_earthPixels u_sunDirection u_growRatio
// Lit by the sun: a fixed ambient and diffuse share to which the pass's ambient, diffuse and
// specular add (all black by default), so a set draws plainly lit out of the box and an
// application can brighten or tint it through the pass. The edges are outlined over one
// pixel's length at the look-at point (from u_earthPixels), so neighbouring prisms stay apart.
uniform float u_lightingEnabled;
uniform vec3 u_sunDirection;
uniform vec4 u_ambient;
uniform vec4 u_diffuse;
uniform vec4 u_specular;
uniform float u_shininess;
uniform float u_earthPixels;

in vec3 f_eyePosition;
in vec3 f_eyeNormal;
in vec4 f_color;
in vec3 f_edge;

out vec4 o_color;

const float kEarthCircumference = 40075016.68557849;
const float kAmbient = 0.3;
const float kDiffuse = 0.7;

void main()
{
    vec3 rgb = f_color.rgb;
    if (u_lightingEnabled > 0.5)
    {
        vec3 n = normalize(f_eyeNormal);
        vec3 s = length(u_sunDirection) > 0.0 ? normalize(u_sunDirection) : vec3(0.0);
        float d = max(dot(n, s), 0.0);
        vec3 h = normalize(s + normalize(-f_eyePosition));
        float shine = d > 0.0 ? pow(max(dot(n, h), 0.0), max(u_shininess, 1.0)) : 0.0;
        rgb = rgb * (vec3(kAmbient + kDiffuse * d) + u_ambient.rgb + u_diffuse.rgb * d) +
              u_specular.rgb * shine;
    }
    float metresPerPixel = kEarthCircumference / max(u_earthPixels, 1e-6);
    float edge = min(f_edge.x, min(f_edge.y, f_edge.z)) / metresPerPixel;
    rgb *= mix(0.6, 1.0, smoothstep(0.5, 1.5, edge));
    o_color = vec4(clamp(rgb, 0.0, 1.0), f_color.a);
}
