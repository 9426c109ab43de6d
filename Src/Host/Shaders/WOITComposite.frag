#version 420 compatibility
// Lays the filled targets of the weighted transparency over what shows through them: the
// colour sum divided by its weight, mixed with the backdrop by the transmittance. The
// backdrop is the frame as it stood, on unit 2, when the host binds it, else
// uBackgroundColor. Pixels that no translucent draw reached are left alone.

uniform sampler2DRect ColorTex0; // weighted colour sums, alpha sum in a
uniform sampler2DRect ColorTex1; // transmittance in r
layout(binding = 2) uniform sampler2DRect u_backdrop;
uniform vec3 uBackgroundColor;

out vec4 fragColor;

void main()
{
    ivec2 p = ivec2(gl_FragCoord.xy);
    float transmittance = texelFetch(ColorTex1, p).r;
    if (transmittance > 0.998)
        discard;
    vec4 sums = texelFetch(ColorTex0, p);
    vec3 average = sums.rgb / clamp(sums.a, 1.0e-4, 6.0e4);
    vec3 behind = textureSize(u_backdrop).x > 0 ? texelFetch(u_backdrop, p).rgb : uBackgroundColor;
    fragColor = vec4(mix(average, behind, transmittance), 1.0);
}
