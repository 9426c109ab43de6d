#version 330 compatibility
// roles: u_drawMode u_fade

in vec2 v_value;

uniform float u_drawMode;
uniform float u_fade;         // share of the trails kept per frame
uniform sampler2D u_texture0; // the trails
uniform sampler2D u_texture1; // the coloured wind speed

out vec4 fragColor;

void main()
{
    int mode = int(u_drawMode + 0.5);
    if (mode == 0)
    {
        // The segment's opacity in every channel. Smoothing scales only alpha by coverage,
        // and segments go in unblended, so a head's soft edge would cut into the tail drawn
        // the frame before; the colour channels keep the opacity whole.
        fragColor = vec4(vec3(v_value.y), v_value.y);
    }
    else if (mode == 1)
    {
        // Blended (zero, source alpha): the trails are multiplied by the fade.
        fragColor = vec4(0.0, 0.0, 0.0, u_fade);
    }
    else if (mode == 2)
    {
        fragColor = texture(u_texture1, v_value);
    }
    else
    {
        // White trails, as opaque as what is left of them.
        fragColor = vec4(1.0, 1.0, 1.0, texture(u_texture0, v_value).r);
    }
}
