#version 330 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity
// One vertex per timed position of a line strip. The time runs linearly along each
// segment, so the fragment stage cuts the strip where the time leaves the window.
uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;

in vec4 a_position;

out float f_time;

void main()
{
    f_time = a_position.w;
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(a_position.xyz, 1.0);
}
