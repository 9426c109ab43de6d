#version 420 compatibility
// u_rayPass 1: the front faces write their cube coordinates (the ray's entry points).
// u_rayPass 0: each back face fragment marches from the entry point under it (or from the
// eye when the eye is inside the cube) to itself, front to back, in steps of u_stepSize
// of cube space.

in vec3 v_cube;
flat in vec3 v_eye;
flat in vec3 v_toLight;

uniform float u_rayPass;
uniform vec2 u_screenSize;
uniform float u_stepSize;
uniform mat4 u_texMatrix;
uniform vec3 u_volumeColor;
layout(binding = 2) uniform sampler2D u_entry;
layout(binding = 1) uniform sampler1D u_transfer;   // 256 RGBA entries, one per voxel value
layout(binding = 3) uniform sampler2D u_colorTable; // colour by voxel value along s
layout(binding = 0) uniform sampler3D u_volume;

out vec4 fragColor;

// Opacity of a transfer entry counts over this many voxels of path.
const float kVoxelsPerOpacity = 5.0;
const int kMaxSteps = 2048;

void main()
{
    if (u_rayPass > 0.5)
    {
        fragColor = vec4(v_cube, 1.0);
        return;
    }
    bool eyeInside = all(greaterThanEqual(v_eye, vec3(0.0))) && all(lessThanEqual(v_eye, vec3(1.0)));
    vec3 entry = eyeInside ? v_eye : texture(u_entry, gl_FragCoord.xy / u_screenSize).xyz;
    vec3 ray = v_cube - entry;
    float len = length(ray);
    if (len < 1e-4)
        discard;
    float step = max(u_stepSize, 1e-4);
    vec3 dir = ray / len;

    vec3 size = max(vec3(textureSize(u_volume, 0)), vec3(1.0));
    // Samples stay half a voxel inside, so the repeating wrap never blends opposite faces.
    vec3 lo = 0.5 / size, hi = 1.0 - lo;
    vec3 stepTex = mat3(u_texMatrix) * (dir * step);
    float voxelsPerStep = length(stepTex * size);
    float exponent = voxelsPerStep / kVoxelsPerOpacity;
    vec3 lightVoxels = v_toLight * size;
    vec3 toLight = length(lightVoxels) > 0.0 ? 1.5 * normalize(lightVoxels) / size : vec3(0.0);

    // A fixed offset per pixel, under one step, turns the bands that regular steps leave
    // in thin layers into fine grain.
    float jitter = fract(sin(dot(gl_FragCoord.xy, vec2(12.9898, 78.233))) * 43758.5453);
    // Clear air (value 0) costs one fetch when the table leaves it transparent.
    bool clearIsEmpty = texture(u_transfer, 0.5 / 256.0).a <= 0.0;

    vec4 sum = vec4(0.0);
    int n = min(int(len / step) + 1, kMaxSteps);
    for (int i = 0; i < n; ++i)
    {
        vec3 p = entry + dir * min(step * (float(i) + jitter), len);
        vec3 t = clamp((u_texMatrix * vec4(p, 1.0)).xyz, lo, hi);
        float v = texture(u_volume, t).r;
        if (v <= 0.0 && clearIsEmpty)
            continue;
        // Texel centres: voxel value k reads transfer entry k.
        vec4 tf = texture(u_transfer, (v * 255.0 + 0.5) / 256.0);
        if (tf.a <= 0.0)
            continue;
        // A transfer table with colours of its own colours the volume; one that only
        // carries opacity takes the colour table's.
        vec3 rgb = any(greaterThan(tf.rgb, vec3(0.0))) ? tf.rgb
                                                       : texture(u_colorTable, vec2(v, 0.5)).rgb;
        // Lit where the density falls towards the light.
        float ahead = texture(u_volume, clamp(t + toLight, lo, hi)).r;
        float lit = clamp(0.75 + 6.0 * (v - ahead), 0.35, 1.25);
        float a = 1.0 - pow(1.0 - min(tf.a, 0.9999), exponent);
        sum.rgb += (1.0 - sum.a) * a * rgb * lit * u_volumeColor;
        sum.a += (1.0 - sum.a) * a;
        if (sum.a > 0.99)
            break;
    }
    if (sum.a < 1.0 / 255.0)
        discard;
    fragColor = vec4(min(sum.rgb / sum.a, vec3(1.0)), sum.a);
}
