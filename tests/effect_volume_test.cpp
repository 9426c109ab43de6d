// The volume ray caster: where its voxels come from, its transfer table, the first pass's
// target, the clip, and what the two passes show.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eProgram.h"
#include "eProgramLibrary.h"
#include "eRenderVolumeRayCast.h"
#include "eVolumeRayCastAlphaTransfer.h"
#include "eVolumeRayCastColorTransfer.h"
#include <cmath>
#include <cstdio>
#include <epoxy/gl.h>
#include <string>

using namespace KYR;

namespace
{

class VolumeProbe : public eRenderVolumeRayCast
{
public:
    using eRenderVolumeRayCast::m_volumeData;
    using eRenderVolumeRayCast::m_volumeDirty;
};

// A w x h x d volume of clear air with a block of `value` filling its middle half.
unsigned char* Block(int w, int h, int d, unsigned char value)
{
    unsigned char* voxels = new unsigned char[(size_t)w * h * d]();
    for (int k = d / 4; k < 3 * d / 4; ++k)
        for (int j = h / 4; j < 3 * h / 4; ++j)
            for (int i = w / 4; i < 3 * w / 4; ++i)
                voxels[((size_t)k * h + j) * w + i] = value;
    return voxels;
}

// One degree square around (10 E, 20 N), from the ground to 40 km, seen from straight above.
void Place(eRenderVolumeRayCast& volume, KYR::Host::eScene& scene)
{
    eRect2D bound(9.5, 20.5, 10.5, 19.5);
    eVector2T<double> height(0.0, 40000.0);
    volume.SetBound(bound);
    volume.SetHeight(height);
    scene.Camera().LookAt(10.0, 20.0, 4.0e5, 0.0, 0.0);
}

std::string WriteFile(char const* name, std::vector<unsigned char> const& bytes)
{
    std::string path = testing::TempDir() + name;
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f)
    {
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
    return path;
}

// The last texture the frame bound to `target` on `unit`; -1 when none was.
long long LastBound(std::vector<KYR::Host::eRecord> const& records, int target, int unit)
{
    long long name = -1;
    for (auto const& r : records)
        if (r.kind == KYR::Host::eRecord::BindTexture && r.mode == target && r.first == unit)
            name = r.count;
    return name;
}

KYR::Host::eRecord const* LastUniform(std::vector<KYR::Host::eRecord> const& records,
                                      char const* name)
{
    KYR::Host::eRecord const* found = nullptr;
    for (auto const& r : records)
        if (r.kind == KYR::Host::eRecord::Uniform && r.uniform == name)
            found = &r;
    return found;
}

std::vector<float> ReadTransfer(unsigned int texture)
{
    std::vector<float> texels(256 * 4, -1.0f);
    glBindTexture(GL_TEXTURE_1D, texture);
    glGetTexImage(GL_TEXTURE_1D, 0, GL_RGBA, GL_FLOAT, texels.data());
    glBindTexture(GL_TEXTURE_1D, 0);
    return texels;
}

} // namespace

TEST_F(EffectTest, VolumeFromFileGoesUpXFastestAndItsProcessorCopyIsFreed)
{
    // 5 x 3 x 2 voxels numbered in file order: odd rows test the byte alignment.
    std::vector<unsigned char> bytes(30);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = (unsigned char)(7 * i + 1);
    VolumeProbe volume;
    Place(volume, *m_scene);
    volume.SetVolume3DTex(WriteFile("volume_full.raw", bytes).c_str(), 5, 3, 2);
    EXPECT_TRUE(volume.m_volumeDirty);
    m_scene->Add(&volume);
    auto records = RecordFrame();
    EXPECT_EQ(volume.m_volumeData.Get(), nullptr);
    EXPECT_FALSE(volume.m_volumeDirty);

    long long texture = LastBound(records, GL_TEXTURE_3D, 0);
    ASSERT_GT(texture, 0);
    std::vector<unsigned char> back(bytes.size(), 0);
    glBindTexture(GL_TEXTURE_3D, (GLuint)texture);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_3D, 0, GL_RED, GL_UNSIGNED_BYTE, back.data());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glBindTexture(GL_TEXTURE_3D, 0);
    EXPECT_EQ(back, bytes);
}

TEST_F(EffectTest, ShortOrMissingVoxelFilesLeaveNoVolumeAndTheCubeIsStillDrawnTwice)
{
    // A short file drops even voxels that were waiting from memory.
    VolumeProbe shortFile;
    Place(shortFile, *m_scene);
    shortFile.SetVolume3DTex(4, 4, 4, Block(4, 4, 4, 200));
    shortFile.SetVolume3DTex(
        WriteFile("volume_short.raw", std::vector<unsigned char>(63, 9)).c_str(), 4, 4, 4);
    EXPECT_EQ(shortFile.m_volumeData.Get(), nullptr);
    EXPECT_FALSE(shortFile.m_volumeDirty);
    m_scene->Add(&shortFile);
    EXPECT_EQ(LastBound(RecordFrame(), GL_TEXTURE_3D, 0), 0);
    m_scene->Remove(&shortFile);

    eRenderVolumeRayCast missing;
    Place(missing, *m_scene);
    missing.SetVolume3DTex((testing::TempDir() + "no_such_volume.raw").c_str(), 4, 4, 4);
    m_scene->Add(&missing);
    auto records = RecordFrame();
    EXPECT_EQ(LastBound(records, GL_TEXTURE_3D, 0), 0);
    // Front faces with the ray pass on, then back faces with it off.
    std::vector<std::string> sequence;
    for (auto const& r : records)
        if (r.kind == eRecord::Draw)
        {
            EXPECT_EQ(r.op, "DrawIndexed");
            EXPECT_EQ(r.mode, eOT_TRIANGLE_LIST);
            EXPECT_EQ(r.count, 36);
            sequence.push_back("draw");
        }
        else if (r.kind == eRecord::Uniform && r.uniform == "u_rayPass")
            sequence.push_back(r.values[0] == 1.0 ? "pass 1" : "pass 0");
    EXPECT_EQ(sequence, (std::vector<std::string>{"pass 1", "draw", "pass 0", "draw"}));
}

TEST_F(EffectTest, VolumeRolesNameTheProgramsUniforms)
{
    eRenderProgram* rp = KYR::Host::eProgramLibrary::Get().Find("VolumeRayCast");
    ASSERT_NE(rp, nullptr);
    using V = eRenderVolumeRayCast;
    std::pair<int, char const*> const roles[] = {{V::eR_RAY_PASS, "u_rayPass"},
                                                 {V::eR_SCREEN_SIZE, "u_screenSize"},
                                                 {V::eR_STEP_SIZE, "u_stepSize"},
                                                 {V::eR_TEX_MATRIX, "u_texMatrix"},
                                                 {V::eR_CAMERA_POSITION, "u_cameraPosition"},
                                                 {V::eR_LIGHT_POSITION, "u_lightPosition"},
                                                 {V::eR_COLOR, "u_volumeColor"},
                                                 {V::eR_ENTRY_SAMPLER, "u_entry"},
                                                 {V::eR_TRANSFER_SAMPLER, "u_transfer"},
                                                 {V::eR_COLOR_SAMPLER, "u_colorTable"},
                                                 {V::eR_VOLUME_SAMPLER, "u_volume"}};
    for (auto const& role : roles)
        EXPECT_EQ(KYR::Host::UniformNameAt(rp->GetProgram()->GetProgramID(),
                                           rp->GetUniform()->m_nCustom[role.first]),
                  role.second);
}

TEST_F(EffectTest, VolumeTransferTableComesFromTheStandardFunctionOrRepeatsTheGivenOne)
{
    eRenderVolumeRayCast volume;
    Place(volume, *m_scene);
    volume.SetEigenValue(0.5f);
    volume.SetEigenValueSpan(128.0f); // half the value range, in 1/256 parts
    m_scene->Add(&volume);
    long long texture = LastBound(RecordFrame(), GL_TEXTURE_1D, 1);
    ASSERT_GT(texture, 0);
    std::vector<float> texels = ReadTransfer((unsigned int)texture);
    // Centre entry 127, half width 63: a smooth rise over entries 64..189, nothing above.
    auto rise = [](double t) { return t * t * (3.0 - 2.0 * t); };
    struct
    {
        int entry;
        double alpha;
    } const cases[] = {{0, 0.0},
                       {63, 0.0},
                       {64, 0.0},
                       {100, rise(36.0 / 127.0)},
                       {127, rise(63.0 / 127.0)},
                       {189, rise(125.0 / 127.0)},
                       {190, 0.0},
                       {255, 0.0}};
    for (auto const& c : cases)
    {
        SCOPED_TRACE(c.entry);
        EXPECT_NEAR(texels[c.entry * 4 + 3], c.alpha, 0.5 / 255.0 + 1e-6);
        EXPECT_EQ(texels[c.entry * 4 + 0] + texels[c.entry * 4 + 1] + texels[c.entry * 4 + 2],
                  0.0f);
    }

    // A table of three entries repeats over the 256.
    volume.SetVolumeColorRGBA({eVector4T<double>(1.0, 0.0, 0.0, 0.2),
                               eVector4T<double>(0.0, 1.0, 0.0, 0.6),
                               eVector4T<double>(0.0, 0.0, 1.0, 1.0)});
    RecordFrame();
    texels = ReadTransfer((unsigned int)texture);
    for (int entry : {0, 1, 2, 3, 4, 254, 255})
    {
        SCOPED_TRACE(entry);
        EXPECT_NEAR(texels[entry * 4 + entry % 3], 1.0, 1e-6);
        EXPECT_NEAR(texels[entry * 4 + 3],
                    entry % 3 == 0   ? 0.2
                    : entry % 3 == 1 ? 0.6
                                     : 1.0,
                    0.5 / 255.0 + 1e-6);
    }

    // A new eigen value discards the given table for the standard function again.
    volume.SetEigenValue(0.5f);
    RecordFrame();
    texels = ReadTransfer((unsigned int)texture);
    EXPECT_EQ(texels[0], 0.0f);
    EXPECT_NEAR(texels[127 * 4 + 3], rise(63.0 / 127.0), 0.5 / 255.0 + 1e-6);
}

TEST_F(EffectTest, VolumeEntryTargetFollowsTheViewportFromTheFirstFrameOn)
{
    eRenderVolumeRayCast volume;
    Place(volume, *m_scene);
    m_scene->Add(&volume);
    auto entrySize = [&](std::vector<eRecord> const& records)
    {
        long long texture = LastBound(records, GL_TEXTURE_2D, 2);
        GLint w = 0, h = 0;
        glBindTexture(GL_TEXTURE_2D, (GLuint)texture);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &h);
        glBindTexture(GL_TEXTURE_2D, 0);
        return std::make_pair((int)w, (int)h);
    };
    EXPECT_EQ(entrySize(RecordFrame()), std::make_pair(96, 96));
    m_scene->Viewport().SetSize(64, 48);
    auto records = RecordFrame();
    EXPECT_EQ(entrySize(records), std::make_pair(64, 48));
    KYR::Host::eRecord const* screen = LastUniform(records, "u_screenSize");
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(screen->values, (std::vector<double>{64.0, 48.0}));
}

TEST_F(EffectTest, VolumeClipPicksThePartOfTheVolumeTheCubeShows)
{
    eRenderVolumeRayCast volume;
    Place(volume, *m_scene);
    m_scene->Add(&volume);
    struct
    {
        char const* what;
        eRect2D clip;
        eVector2T<double> heights;
        double offset[3], scale[3];
    } const cases[] = {
        {"no clip", eRect2D(0, 0, 0, 0), eVector2T<double>(0, -1), {0, 0, 0}, {1, 1, 1}},
        {"east half, upper half",
         eRect2D(10.0, 20.5, 10.5, 19.5),
         eVector2T<double>(20000, 40000),
         {0.5, 0, 0.5},
         {0.5, 1, 0.5}},
        // A clip rectangle beside the volume shows all of it; the heights still apply.
        {"outside",
         eRect2D(30, 41, 31, 40),
         eVector2T<double>(10000, 30000),
         {0, 0, 0.25},
         {1, 1, 0.5}},
    };
    for (auto const& c : cases)
    {
        SCOPED_TRACE(c.what);
        eRect2D clip = c.clip;
        eVector2T<double> heights = c.heights;
        volume.SetClipBound(clip);
        volume.SetClipHeight(heights);
        auto records = RecordFrame();
        KYR::Host::eRecord const* m = LastUniform(records, "u_texMatrix");
        ASSERT_NE(m, nullptr);
        ASSERT_EQ(m->values.size(), 16u);
        for (int k = 0; k < 3; ++k)
        {
            EXPECT_NEAR(m->values[12 + k], c.offset[k], 1e-6);
            EXPECT_NEAR(m->values[5 * k], c.scale[k], 1e-6);
        }
    }
}

TEST_F(EffectTest, VolumeDenseCoreIsOpaqueAndClearAirTransparent)
{
    eRenderVolumeRayCast volume;
    Place(volume, *m_scene);
    volume.SetVolume3DTex(32, 32, 16, Block(32, 32, 16, 240));
    volume.SetEigenValue(0.5f);
    volume.SetEigenValueSpan(256.0f);
    m_scene->Add(&volume);
    int const c = m_scene->Width() / 2;
    // The core fills the middle; at 19 pixels off centre the rays cross only clear air.
    std::vector<unsigned char> core[2], air[2];
    float const backgrounds[2] = {0.0f, 1.0f};
    for (int b = 0; b < 2; ++b)
    {
        float g = backgrounds[b];
        m_scene->SetClearColor(g, g, g, 1.0f);
        m_scene->RenderFrame();
        core[b] = Pixel(c, c);
        air[b] = Pixel(c + 19, c);
        unsigned char bg = (unsigned char)(g * 255.0f);
        EXPECT_EQ(air[b], (std::vector<unsigned char>{bg, bg, bg, 255}));
    }
    for (int k = 0; k < 3; ++k)
        EXPECT_NEAR(core[0][k], core[1][k], 2) << "the background shows through the core";
    EXPECT_GT(core[0][0] + core[0][1] + core[0][2], 60) << "the core is drawn";
}

TEST(VolumeTransferValues, CopiesCarryEveryField)
{
    eVolumeRayCastColorTransfer colour;
    colour.m_bEnabled = true;
    colour.m_nFirst = 3;
    colour.m_nLast = 200;
    colour.m_dCenter = 0.4;
    colour.m_dSpan = 0.25;
    colour.m_arColors = {eVector4T<double>(1, 0.5, 0, 1), eVector4T<double>(0, 0, 1, 0.5)};
    eVolumeRayCastColorTransfer colourCopy(colour), colourAssigned;
    colourAssigned = colour;
    eVolumeRayCastColorTransfer const& colourSelf = colourAssigned;
    colourAssigned = colourSelf;
    for (auto const* c : {&colourCopy, &colourAssigned})
    {
        EXPECT_EQ(c->m_bEnabled, true);
        EXPECT_EQ(c->m_nFirst, 3);
        EXPECT_EQ(c->m_nLast, 200);
        EXPECT_EQ(c->m_dCenter, 0.4);
        EXPECT_EQ(c->m_dSpan, 0.25);
        EXPECT_EQ(c->m_arColors, colour.m_arColors);
    }

    eVolumeRayCastAlphaTransfer alpha;
    alpha.m_bEnabled = true;
    alpha.m_nFirst = 1;
    alpha.m_nLast = 9;
    alpha.m_arPoints = {eVector2T<double>(0.1, 0.0), eVector2T<double>(0.9, 1.0)};
    eVolumeRayCastAlphaTransfer alphaCopy(alpha), alphaAssigned;
    alphaAssigned = alpha;
    eVolumeRayCastAlphaTransfer const& alphaSelf = alphaAssigned;
    alphaAssigned = alphaSelf;
    for (auto const* a : {&alphaCopy, &alphaAssigned})
    {
        EXPECT_EQ(a->m_bEnabled, true);
        EXPECT_EQ(a->m_nFirst, 1);
        EXPECT_EQ(a->m_nLast, 9);
        EXPECT_EQ(a->m_arPoints, alpha.m_arPoints);
    }
}

template <> struct CopySubject<eRenderVolumeRayCast>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(KYR::Host::eScene& scene)
    {
        scene.Camera().LookAt(10.0, 20.0, 4.0e5, 0.0, 0.0);
    }
    static eRenderVolumeRayCast* Make(KYR::Host::eScene& scene)
    {
        auto* volume = new eRenderVolumeRayCast();
        Place(*volume, scene);
        volume->SetVolume3DTex(16, 16, 8, Block(16, 16, 8, 180));
        volume->SetEigenValue(0.5f);
        volume->SetEigenValueSpan(256.0f);
        return volume;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Volume, CopyIdiom, ::testing::Types<eRenderVolumeRayCast>);
