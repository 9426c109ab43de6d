#version 330 compatibility
// Plain coloured geometry: one colour, optional per-vertex colour, optional headlight shading.
// roles: u_useVertexColor

in vec4 a_position; // xyz (w defaults to 1)
in vec3 a_attrib1;  // normal
in vec4 a_color;    // per-vertex colour

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec4 u_color;
uniform float u_lightingEnabled;
uniform vec4 u_ambient;
uniform vec4 u_diffuse;
uniform float u_useVertexColor;

out vec4 v_color;

void main()
{
    mat4 modelView = u_viewMatrix * u_worldMatrix;
    gl_Position = u_projectionMatrix * modelView * a_position;

    vec4 color = u_color;
    if (u_useVertexColor > 0.5)
        color *= a_color;
    if (u_lightingEnabled > 0.5)
    {
        // Light along the view direction, in eye space.
        vec3 n = normalize(mat3(modelView) * a_attrib1);
        float lambert = abs(n.z);
        color.rgb *= clamp(u_ambient.rgb + u_diffuse.rgb * lambert, 0.0, 1.0);
    }
    v_color = color;
}
