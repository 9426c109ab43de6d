#version 330 compatibility
// roles: u_projKind u_maskRect u_backgroundColor u_blockRect
// The background colour with an opening: inside u_maskRect (left, top, width, height in
// degrees) the mask picture on unit 0 opens the cover by its red times alpha. Without a
// picture the background covers everything. The far side of the globe is left out: where no
// globe stands in front of it, it would show through the opening.
#include "GeoProject.glsl"
#include "GeoFrame.glsl"

in vec2 v_geo;
in vec3 v_view;

uniform sampler2D u_texture0;
uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform int u_projKind;
uniform vec4 u_maskRect;
uniform vec4 u_backgroundColor;

out vec4 fragColor;

void main()
{
    if (!FacesEye(u_projKind, v_view, u_viewMatrix * u_worldMatrix))
        discard;
    float opening = 0.0;
    ivec2 size = textureSize(u_texture0, 0);
    vec2 uv = vec2((v_geo.x - u_maskRect.x) / u_maskRect.z, (u_maskRect.y - v_geo.y) / u_maskRect.w);
    if (size.x > 0 && size.y > 0 && all(greaterThanEqual(uv, vec2(0.0))) && all(lessThanEqual(uv, vec2(1.0))))
    {
        vec4 m = texture(u_texture0, uv);
        opening = m.r * m.a;
    }
    fragColor = vec4(u_backgroundColor.rgb, u_backgroundColor.a * (1.0 - opening));
}
