#version 330 compatibility
// roles: u_timeStart u_currentTime u_pictureMode u_sizeMode u_rotateAngle u_pointSize u_textColumns
// Pictures at geographic points: a_position is (longitude, latitude in degrees, time,
// level). The geometry stage turns each point into a picture.
in vec4 a_position;

out vec4 v_point;

void main()
{
    v_point = a_position;
    gl_Position = vec4(0.0, 0.0, 0.0, 1.0);
}
