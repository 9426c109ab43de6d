// kyr-image-check: tells whether a picture shows something, for the checks that look at what
// a program drew (the viewer's window, a page's screenshot, the example's PNG). A picture is
// blank when nearly every pixel has the colour most pixels have, or when it has only a few
// colours in all.
//   kyr-image-check FILE [--min-cover FRACTION] [--min-colours N] [--size WxH]
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wunused-function"
#endif
#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#include <stb_image.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::fprintf(stderr, "usage: kyr-image-check FILE [--min-cover F] [--min-colours N] "
                             "[--size WxH]\n");
        return 2;
    }
    double minCover = 0.02;
    long minColours = 16;
    int wantW = 0, wantH = 0;
    for (int i = 2; i + 1 < argc; i += 2)
    {
        if (!std::strcmp(argv[i], "--min-cover"))
            minCover = std::atof(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--min-colours"))
            minColours = std::atol(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--size"))
            std::sscanf(argv[i + 1], "%dx%d", &wantW, &wantH);
        else
        {
            std::fprintf(stderr, "kyr-image-check: unknown option \"%s\"\n", argv[i]);
            return 2;
        }
    }
    int w = 0, h = 0, n = 0;
    unsigned char* px = stbi_load(argv[1], &w, &h, &n, 4);
    if (!px)
    {
        std::fprintf(stderr, "kyr-image-check: cannot read \"%s\": %s\n", argv[1],
                     stbi_failure_reason());
        return 1;
    }
    std::map<unsigned int, long> counts;
    for (long i = 0; i < (long)w * h; ++i)
    {
        unsigned char const* p = px + i * 4;
        ++counts[(unsigned)p[0] << 24 | (unsigned)p[1] << 16 | (unsigned)p[2] << 8 | p[3]];
    }
    stbi_image_free(px);
    long most = 0;
    for (auto const& c : counts)
        most = c.second > most ? c.second : most;
    double cover = 1.0 - (double)most / ((double)w * h);
    std::printf("%s: %dx%d, %zu colours, %.1f%% of the pixels differ from the commonest colour\n",
                argv[1], w, h, counts.size(), cover * 100.0);
    if (wantW && (w != wantW || h != wantH))
    {
        std::fprintf(stderr, "kyr-image-check: expected %dx%d\n", wantW, wantH);
        return 1;
    }
    if (cover < minCover || (long)counts.size() < minColours)
    {
        std::fprintf(stderr, "kyr-image-check: \"%s\" is blank\n", argv[1]);
        return 1;
    }
    return 0;
}
