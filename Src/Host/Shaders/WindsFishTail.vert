#version 330 compatibility
// roles: u_drawMode u_fade
// Wind fishtail lines. a_position is a clip-space point with two more values: for the
// segments (u_drawMode 0) the line's opacity, twice; for the screen quad (modes 1 to 3)
// the texture coordinate of the corner.

in vec4 a_position;

uniform float u_drawMode;

out vec2 v_value;

void main()
{
    v_value = a_position.zw;
    // The quad lies on the near plane, so it passes any depth drawn before it.
    float z = u_drawMode < 0.5 ? 0.0 : -1.0;
    gl_Position = vec4(a_position.xy, z, 1.0);
}
