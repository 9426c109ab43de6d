#version 330 compatibility
// roles: u_showType u_showLevel u_colorType u_uniformColor u_startValue u_cameraDistance u_pointMatrix u_refHigh u_refLow - u_projKind u_relativeHeight u_colorTable
// Symbols standing at world positions and keeping their size on the screen.
// a_position   x, y of the symbol in symbol units; z the object number (not used here)
// a_texcoord1  world position of the object, high floats (DoubleToTwoFloat)
// a_texcoord2  world position of the object, low floats
// a_attrib1    x: value 0..1 into the colour table, y: level of the object
// a_color      vertex colour (colour type 1)
// a_attrib12   two flag bytes: (0, 1) hides the object, (1, 0) marks it selected,
//              (0, 0) and a missing stream draw it plainly
// The symbol matrix carries the scale that follows the camera, so one symbol unit
// stays about the same number of pixels at any distance.

in vec3 a_position;
in vec3 a_texcoord1;
in vec3 a_texcoord2;
in vec2 a_attrib1;
in vec4 a_color;
in vec2 a_attrib12;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform mat4 u_pointMatrix;
uniform vec3 u_refHigh;
uniform vec3 u_refLow;
uniform int u_showType;  // negative: all objects; otherwise levels up to u_showLevel
uniform int u_showLevel;
uniform int u_colorType; // 0 uniform colour, 1 vertex colour, 2 colour table
uniform vec4 u_uniformColor;
uniform float u_startValue; // objects with a smaller value are hidden
uniform float u_cameraDistance;
uniform int u_projKind;     // 0 globe, other values a plane map
uniform float u_relativeHeight;

out vec4 v_color;
out float v_value;
out float v_selected;
out float v_hidden;

void main()
{
    bool hidden = a_attrib12.x < 0.5 && a_attrib12.y > 0.5;
    bool selected = a_attrib12.x > 0.5 && a_attrib12.y < 0.5;
    if (u_showType >= 0 && a_attrib1.y > float(u_showLevel))
        hidden = true;
    if (a_attrib1.x < u_startValue)
        hidden = true;

    vec3 up = u_projKind == 0 ? normalize(a_texcoord1) : vec3(0.0, 0.0, 1.0);
    // The reference centre comes off in two parts so that the large numbers cancel first.
    vec3 relative = (a_texcoord1 - u_refHigh) + (a_texcoord2 - u_refLow);
    relative += up * u_relativeHeight;
    mat4 modelView = u_viewMatrix * u_worldMatrix;
    vec4 anchor = modelView * vec4(relative, 1.0);
    // On the globe a station beyond the horizon is not drawn.
    if (u_projKind == 0 && dot(-anchor.xyz, mat3(modelView) * up) < 0.0)
        hidden = true;

    vec2 offset = (u_pointMatrix * vec4(a_position.xy, 0.0, 1.0)).xy;
    if (selected)
        offset *= 1.5;
    // Lift the flat symbol towards the eye so that a tilted view does not bury it.
    anchor.xyz += normalize(-anchor.xyz) * (u_cameraDistance * 0.03);
    anchor.xy += offset;
    gl_Position = hidden ? vec4(2.0, 2.0, 2.0, 1.0) : u_projectionMatrix * anchor;

    v_color = u_colorType == 1 ? a_color : u_uniformColor;
    v_value = a_attrib1.x;
    v_selected = selected ? 1.0 : 0.0;
    v_hidden = hidden ? 1.0 : 0.0;
}
