// The visual globe: its relief mesh read back from the card against the bump picture, and
// the sphere the one raw draw puts on the screen.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eFile.h"
#include "eHardwareBuffer.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eRenderVisualGlobe.h"
#include <epoxy/gl.h>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

using namespace KYR;

namespace
{

// A bump picture of the test's own, in a work folder of its own for the test's duration:
// smooth relief (steps 20..100, one value on each pole row) in the third channel, and other
// values in the first two, so that reading the wrong channel shows.
class OwnBumpPicture
{
public:
    static int const kWidth = 401, kHeight = 201;

    OwnBumpPicture()
    {
        char const* old = std::getenv("KYR_WORK_PATH");
        m_saved = old ? old : "";
        std::string dir = ::testing::TempDir() + "kyr_visual_globe/";
        std::string weather = dir + "Resources/Weather/";
        (void)std::system(("mkdir -p " + weather).c_str());
        m_pixels.resize((size_t)kWidth * kHeight * 3);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
            {
                double lon = (x / (kWidth - 1.0) * 360.0 - 180.0) * eMathEngine::DEG_TO_RAD;
                double lat = (90.0 - y / (kHeight - 1.0) * 180.0) * eMathEngine::DEG_TO_RAD;
                unsigned char* p = &m_pixels[((size_t)y * kWidth + x) * 3];
                p[0] = 7;
                p[1] = 200;
                p[2] =
                    (unsigned char)std::lround(60.0 + 40.0 * std::sin(6.0 * lon) * std::cos(lat));
            }
        // The decoder goes by the content, so a lossless picture may carry the JPEG name.
        m_bReady = stbi_write_png((weather + "wgs84heightbump.jpg").c_str(), kWidth, kHeight, 3,
                                  m_pixels.data(), kWidth * 3) != 0;
        setenv("KYR_WORK_PATH", dir.c_str(), 1);
    }
    ~OwnBumpPicture()
    {
        if (m_saved.empty())
            unsetenv("KYR_WORK_PATH");
        else
            setenv("KYR_WORK_PATH", m_saved.c_str(), 1);
    }
    bool Ready() const { return m_bReady; }
    // Height in metres at the picture point nearest to (u, v), rounding half away from zero.
    double Height(double u, double v) const
    {
        long x = std::lround((kWidth - 1) * u), y = std::lround((kHeight - 1) * v);
        return m_pixels[((size_t)y * kWidth + x) * 3 + 2] * 1000.0;
    }

private:
    std::string m_saved;
    std::vector<unsigned char> m_pixels;
    bool m_bReady = false;
};

int Brightness(std::vector<unsigned char> const& px)
{
    return px[0] + px[1] + px[2];
}

} // namespace

using VisualGlobeTest = EffectTest;

// Every vertex of the card's buffer: on the sphere of 6633137 m at its own 0.9-degree cell,
// lifted by its bump step times 1000 m on each axis, with a unit normal pointing outward.
TEST_F(VisualGlobeTest, MeshFollowsTheCellsAndTheBumpPicture)
{
    OwnBumpPicture picture;
    ASSERT_TRUE(picture.Ready());
    eRenderVisualGlobe globe;
    m_scene->Add(&globe);
    eVertexData* vertices = globe.GetVertexData();
    eIndexExData* indices = globe.GetIndexData();
    ASSERT_TRUE(vertices && indices && vertices->GetHardwareBuffer());
    unsigned int const bufferId = vertices->GetHardwareBuffer()->GetBufferID();
    globe.Initialize(&m_scene->Engine());
    EXPECT_EQ(vertices->GetHardwareBuffer()->GetBufferID(), bufferId) << "second Initialize";

    ASSERT_EQ(vertices->GetVertexSize(), 80601);
    ASSERT_EQ(vertices->GetVertexStride(), 32);
    EXPECT_EQ(indices->GetIndexSize(), 480000);
    EXPECT_EQ(indices->GetIndexType(), (unsigned int)GL_UNSIGNED_INT);
    EXPECT_TRUE(vertices->GetVertexBuffer().empty()) << "the processor copy is dropped";

    std::vector<float> v((size_t)80601 * 8);
    ASSERT_TRUE(vertices->GetHardwareBuffer()->ReadData(0, (int)(v.size() * 4), v.data()));
    int worst = -1;
    for (int r = 0; r < 201 && worst < 0; ++r)
        for (int c = 0; c < 401 && worst < 0; ++c)
        {
            float const* p = &v[((size_t)r * 401 + c) * 8];
            double u = c / 400.0, t = r / 200.0, h = picture.Height(u, t);
            eVector3T<double> s = eMathEngine::SphericalToCartesian(
                (c * 0.9 - 180.0) * eMathEngine::DEG_TO_RAD,
                (90.0 - r * 0.9) * eMathEngine::DEG_TO_RAD, 6633137.0);
            double error = std::fabs(p[0] - (s.x + h)) + std::fabs(p[1] - (s.y + h)) +
                           std::fabs(p[2] - (s.z + h));
            bool texcoord = std::fabs(p[3] - u) < 1e-6 && std::fabs(p[4] - t) < 1e-6;
            eVector3T<double> n(p[5], p[6], p[7]), at(p[0], p[1], p[2]);
            if (error > 3.0 || !texcoord || std::fabs(n.Length() - 1.0) > 1e-5 || n.Dot(at) <= 0.0)
                worst = r * 401 + c;
        }
    EXPECT_EQ(worst, -1) << "first wrong vertex: row " << worst / 401 << ", column " << worst % 401;

    // The normals follow the relief: away from the poles each stands square to the chords
    // to its neighbours (up to the picture's whole steps), which the plain radial direction
    // does not on the slopes.
    auto at = [&v](int r, int c, int k)
    {
        float const* p = &v[((size_t)r * 401 + c) * 8 + k];
        return eVector3T<double>(p[0], p[1], p[2]);
    };
    double normal = 0.0, radial = 0.0;
    for (int r = 10; r <= 190; ++r)
        for (int c = 1; c < 400; ++c)
            for (eVector3T<double> chord :
                 {at(r, c + 1, 0) - at(r, c - 1, 0), at(r + 1, c, 0) - at(r - 1, c, 0)})
            {
                chord.Normalize();
                normal += std::fabs(chord.Dot(at(r, c, 5)));
                radial += std::fabs(chord.Dot(at(r, c, 0).Normalized()));
            }
    EXPECT_LT(normal, radial / 10.0) << normal << " " << radial;
}

// One draw of all indices from the effect's own buffers; the sun's direction reaches the
// program, and the side facing the sun is the bright one.
TEST_F(VisualGlobeTest, DrawsOneSphereLitFromTheSunsSide)
{
    m_scene->Camera().LookAt(0.0, 0.0, 4.0e7, 0.0, 0.0);
    m_scene->Engine().SetSunPosition(eVector3T<double>(0.0, 1.5e11, 0.0)); // over 90 E
    eRenderVisualGlobe globe;
    m_scene->Add(&globe);
    std::vector<eRecord> all = RecordFrame();

    std::vector<eRecord> draws = Of(all, eRecord::Draw);
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].op, "glDrawElements");
    EXPECT_EQ(draws[0].mode, GL_TRIANGLES);
    EXPECT_EQ(draws[0].count, 480000);
    bool sun = false;
    for (eRecord const& r : Of(all, eRecord::Uniform))
        if (r.uniform == "u_sunDirection")
            sun = r.values.size() == 3 && std::fabs(r.values[0]) < 1e-6 &&
                  std::fabs(r.values[1] - 1.0) < 1e-6 && std::fabs(r.values[2]) < 1e-6;
    EXPECT_TRUE(sun);

    EXPECT_EQ(Brightness(Pixel(2, 2)), 0) << "beyond the sphere";
    int east = Brightness(Pixel(66, 48)), west = Brightness(Pixel(30, 48));
    EXPECT_GT(west, 0) << "the night side keeps its ambient light";
    EXPECT_GT(east, west + 60);
}

template <> struct CopySubject<eRenderVisualGlobe>
{
    static constexpr bool kSamePixels = true;
    static eRenderVisualGlobe* Make(KYR::Host::eScene&) { return new eRenderVisualGlobe(); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(VisualGlobe, CopyIdiom, ::testing::Types<eRenderVisualGlobe>);
