#version 330 compatibility
// roles: u_rasterRect u_opacity u_hasMask
// A picture over the whole map (unit 0) laid on the tile, weighted by the mask (unit 2, its
// red channel) and u_opacity. The picture holds colour times coverage, as trails fade in
// all four channels, so the colour is recovered by dividing by alpha. Such a picture is
// usually far finer than the screen and unfiltered, so the fragment gathers a grid of
// samples over its footprint: thin trails neither break up nor flicker.
in vec2 v_rasterUV;

uniform sampler2D u_texture0;
uniform sampler2D u_texture2;
uniform float u_hasMask;
uniform float u_opacity;

out vec4 fragColor;

const int kTaps = 4; // per side of the footprint

void main()
{
    vec2 uv = v_rasterUV;
    if (any(lessThan(uv, vec2(0.0))) || any(greaterThan(uv, vec2(1.0))))
        discard;
    vec2 dx = dFdx(uv), dy = dFdy(uv);
    vec4 sum = vec4(0.0);
    float strongest = 0.0;
    for (int j = 0; j < kTaps; ++j)
        for (int i = 0; i < kTaps; ++i)
        {
            vec2 f = (vec2(i, j) + 0.5) / float(kTaps) - 0.5;
            vec4 c = textureLod(u_texture0, uv + f.x * dx + f.y * dy, 0.0);
            sum += c;
            strongest = max(strongest, c.a);
        }
    // Coverage: between the mean (smooth) and the strongest sample (a trail one texel wide
    // still shows when the footprint spans several).
    float coverage = mix(sum.a / float(kTaps * kTaps), strongest, 0.5);
    // Squared, so a trail thins out along its length like a comet's tail and the ground
    // shows between the trails: the fade leaves old trails at a good part of their strength.
    float alpha = coverage * coverage * u_opacity;
    if (u_hasMask > 0.5)
        alpha *= texture(u_texture2, uv).r;
    if (alpha < 1.0 / 255.0)
        discard;
    fragColor = vec4(sum.rgb / max(sum.a, 1e-4), alpha);
}
