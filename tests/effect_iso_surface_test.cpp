// Iso-surfaces and the weighted transparency they are composed with: translucent surfaces
// come out the same in either order, the targets follow the viewport and go with their
// owner, the strategy's one message, what a frame draws, and where a surface stands.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eGLContext.h"
#include "eProgram.h"
#include "eRenderIsoSurface3D.h"
#include "eWOITStrategy.h"
#include <epoxy/gl.h>
#include <algorithm>
#include <cstdlib>

using namespace KYR;

namespace
{

using Mesh = std::vector<tagNormalTextureVertex3r>;

// A flat rectangle facing up, `east` by `north` metres around the origin, as four triangles
// meeting at its centre.
Mesh Rectangle(float east, float north)
{
    float const cx[4] = {-0.5f, 0.5f, 0.5f, -0.5f}, cy[4] = {-0.5f, -0.5f, 0.5f, 0.5f};
    Mesh mesh;
    for (int k = 0; k < 4; ++k)
        for (int c : {-1, k, (k + 1) % 4})
        {
            tagNormalTextureVertex3r v = {{0.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 1.0f}, {0.0f, 0.0f}};
            if (c >= 0)
            {
                v.position[0] = cx[c] * east;
                v.position[1] = cy[c] * north;
            }
            mesh.push_back(v);
        }
    return mesh;
}

Mesh& WideBand()
{
    static Mesh s_mesh = Rectangle(90000.0f, 20000.0f);
    return s_mesh;
}

Mesh& TallBand()
{
    static Mesh s_mesh = Rectangle(20000.0f, 90000.0f);
    return s_mesh;
}

// A surface of `mesh` standing `height` metres over (10 E, 20 N).
eRenderIsoSurface3D* Surface(Mesh& mesh, double height, eVector3T<double> colour, float alpha)
{
    auto* surface = new eRenderIsoSurface3D(mesh.data(), (int)mesh.size(), nullptr, 0);
    surface->SetTranform(eVector3T<double>(0.0, 0.0, 0.0), eVector3T<double>(10.0, 20.0, height),
                         1.0);
    surface->SetMaterialDiffuse(colour);
    surface->SetAlpha(alpha);
    return surface;
}

void LookDown(KYR::Host::eScene& scene)
{
    scene.Camera().LookAt(10.0, 20.0, 4.0e5, 0.0, 0.0);
}

// What Begin binds: the frame buffer, and the name, size and format of both targets.
struct Targets
{
    GLint frame = 0;
    GLint name[2] = {0, 0}, width[2] = {0, 0}, height[2] = {0, 0}, format[2] = {0, 0};
};

Targets Probe(eBlendingStrategy* strategy)
{
    Targets t;
    GLint host = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &host);
    strategy->Begin(nullptr);
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &t.frame);
    for (int i = 0; i < 2; ++i)
    {
        glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0 + i,
                                              GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &t.name[i]);
        glBindTexture(GL_TEXTURE_RECTANGLE, (GLuint)t.name[i]);
        glGetTexLevelParameteriv(GL_TEXTURE_RECTANGLE, 0, GL_TEXTURE_WIDTH, &t.width[i]);
        glGetTexLevelParameteriv(GL_TEXTURE_RECTANGLE, 0, GL_TEXTURE_HEIGHT, &t.height[i]);
        glGetTexLevelParameteriv(GL_TEXTURE_RECTANGLE, 0, GL_TEXTURE_INTERNAL_FORMAT, &t.format[i]);
    }
    glBindTexture(GL_TEXTURE_RECTANGLE, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, (GLuint)host);
    KYR::Host::ApplyHostDefaults();
    return t;
}

bool Alive(Targets const& t)
{
    return glIsFramebuffer((GLuint)t.frame) && glIsTexture((GLuint)t.name[0]) &&
           glIsTexture((GLuint)t.name[1]);
}

bool Gone(Targets const& t)
{
    return !glIsFramebuffer((GLuint)t.frame) && !glIsTexture((GLuint)t.name[0]) &&
           !glIsTexture((GLuint)t.name[1]);
}

class IsoSurfaceTest : public EffectTest
{
protected:
    // Draws the surfaces through the first one's strategy, in the given order, and removes
    // them again.
    std::vector<unsigned char> Compose(std::vector<eRenderIsoSurface3D*> const& order)
    {
        for (auto* s : order)
            m_scene->Add(s, s->GetStrategy());
        m_scene->RenderFrame();
        for (auto* s : order)
            m_scene->Remove(s);
        return m_scene->ReadPixels();
    }

    std::vector<unsigned char> At(std::vector<unsigned char> const& px, int x, int y)
    {
        size_t i = ((size_t)y * m_scene->Width() + x) * 4;
        return {px[i], px[i + 1], px[i + 2]};
    }
};

} // namespace

TEST_F(IsoSurfaceTest, TranslucentSurfacesComposeTheSameInEitherOrder)
{
    // A red band east-west under a blue band north-south, over a grey backdrop.
    m_scene->SetClearColor(0.5f, 0.5f, 0.5f, 1.0f);
    LookDown(*m_scene);
    std::unique_ptr<eRenderIsoSurface3D> red(
        Surface(WideBand(), 10000.0, eVector3T<double>(1.0, 0.0, 0.0), 0.5f));
    std::unique_ptr<eRenderIsoSurface3D> blue(
        Surface(TallBand(), 30000.0, eVector3T<double>(0.0, 0.0, 1.0), 0.5f));
    std::vector<unsigned char> const empty = Compose({});
    std::vector<unsigned char> const redFirst = Compose({red.get(), blue.get()});
    std::vector<unsigned char> const blueFirst = Compose({blue.get(), red.get()});

    ASSERT_EQ(redFirst.size(), blueFirst.size());
    int worst = 0;
    for (size_t i = 0; i < redFirst.size(); ++i)
        worst = std::max(worst, std::abs(int(redFirst[i]) - int(blueFirst[i])));
    EXPECT_LE(worst, 2) << "the draw order shows";

    int const c = m_scene->Width() / 2, off = m_scene->Width() / 5;
    auto grey = At(empty, c, c), both = At(redFirst, c, c);
    auto redOnly = At(redFirst, c - off, c), blueOnly = At(redFirst, c, c - off);
    EXPECT_GT(redOnly[0], grey[0]) << "red shows";
    EXPECT_LT(redOnly[2], grey[2]) << "and covers part of the backdrop";
    EXPECT_GT(blueOnly[2], grey[2]) << "blue shows";
    EXPECT_LT(blueOnly[0], grey[0]);
    EXPECT_GT(both[0], blueOnly[0]) << "red shows through blue";
    EXPECT_GT(both[2], redOnly[2]) << "blue shows over red";
    EXPECT_EQ(At(redFirst, 2, 2), At(empty, 2, 2)) << "where no surface is, the frame stays";
}

TEST_F(IsoSurfaceTest, TargetsFollowTheViewportAndGoWithTheirOwner)
{
    LookDown(*m_scene);
    auto* surface = Surface(WideBand(), 0.0, eVector3T<double>(1.0, 1.0, 1.0), 0.5f);
    m_scene->Add(surface); // drawn alone, so the surface itself sizes its strategy
    m_scene->RenderFrame();
    Targets before = Probe(surface->GetStrategy());
    EXPECT_EQ(before.width[0], 96);
    EXPECT_EQ(before.height[0], 96);
    EXPECT_EQ(before.width[1], 96);
    EXPECT_EQ(before.height[1], 96);
    EXPECT_EQ(before.format[0], GL_RGBA16F);
    EXPECT_EQ(before.format[1], GL_R8);

    m_scene->Remove(surface);
    m_scene.reset(new KYR::Host::eScene(64, 48));
    LookDown(*m_scene);
    m_scene->Add(surface);
    m_scene->RenderFrame();
    Targets after = Probe(surface->GetStrategy());
    EXPECT_EQ(after.width[0], 64);
    EXPECT_EQ(after.height[0], 48);
    EXPECT_EQ(after.width[1], 64);
    EXPECT_EQ(after.height[1], 48);
    int width = 0, height = 0;
    surface->GetStrategy()->GetSize(width, height);
    EXPECT_EQ(width * 1000 + height, 64048);

    m_scene->Remove(surface);
    ASSERT_TRUE(Alive(after));
    delete surface;
    EXPECT_TRUE(Gone(after)) << "the targets outlived their owner";
}

TEST_F(IsoSurfaceTest, AMissingSamplerIsToldOnceInTheStrategysWords)
{
    eRenderProgram* plain = m_scene->Engine().GetRenderProgram(eString("Color"));
    eRenderProgram* compose = m_scene->Engine().GetRenderProgram(eString("WOITComposite"));
    ASSERT_TRUE(plain && compose);
    eWOITStrategy lacking, complete;
    for (eWOITStrategy* s : {&lacking, &complete})
    {
        s->SetSize(8, 8);
        s->Create();
    }
    testing::internal::CaptureStdout();
    lacking.Composite(plain); // neither target's sampler is there
    lacking.Composite(plain);
    complete.Composite(compose);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "not find the uniform location!\n");
    KYR::Host::ApplyHostDefaults();
}

TEST_F(IsoSurfaceTest, AFrameDrawsTheStoredVerticesAsTrianglesWithItsAlpha)
{
    LookDown(*m_scene);
    unsigned int indices[3] = {0, 1, 2}; // uploaded but never drawn from
    Mesh& mesh = WideBand();
    eRenderIsoSurface3D surface(mesh.data(), (int)mesh.size(), indices, 3);
    m_scene->Add(&surface, surface.GetStrategy());
    auto drawsOfMesh = [&](std::vector<eRecord> const& records)
    {
        int n = 0;
        for (auto const& r : Of(records, eRecord::Draw))
            n += r.op == "glDrawArrays" && r.mode == GL_TRIANGLES && r.first == 0 &&
                 r.count == (long long)mesh.size();
        return n;
    };
    auto last = [](std::vector<eRecord> const& records, char const* name)
    {
        std::vector<double> values;
        for (auto const& r : records)
            if (r.kind == eRecord::Uniform && r.uniform == name)
                values = r.values;
        return values;
    };

    std::vector<eRecord> fill = RecordFrame();
    EXPECT_EQ(drawsOfMesh(fill), 1);
    EXPECT_EQ(last(fill, "alpha"), std::vector<double>{0.5});
    EXPECT_EQ(last(fill, "uDepthScale"), std::vector<double>{0.5});
    std::vector<double> background = last(fill, "uBackgroundColor");
    ASSERT_EQ(background.size(), 3u);
    EXPECT_FLOAT_EQ(background[0], 0.1f);
    EXPECT_FLOAT_EQ(background[1], 0.3f);
    EXPECT_FLOAT_EQ(background[2], 0.7f);

    surface.SetRenderMode(eRM_FILL_AND_LINE);
    surface.SetAlpha(0.25f);
    std::vector<eRecord> both = RecordFrame();
    EXPECT_EQ(drawsOfMesh(both), 2) << "fill, then the same draw as lines";
    EXPECT_EQ(last(both, "alpha"), std::vector<double>{0.25});
    GLint mode[2] = {0, 0};
    glGetIntegerv(GL_POLYGON_MODE, mode);
    EXPECT_EQ(mode[0], GL_FILL) << "the line draw leaves its polygon mode behind";
    m_scene->Remove(&surface);
}

TEST_F(IsoSurfaceTest, StandsAtItsPlaceWithTheModelsYAxisNorth)
{
    LookDown(*m_scene);
    std::vector<unsigned char> const empty = m_scene->ReadPixels();
    std::unique_ptr<eRenderIsoSurface3D> band(
        Surface(WideBand(), 0.0, eVector3T<double>(1.0, 1.0, 1.0), 0.8f));
    std::vector<unsigned char> const px = Compose({band.get()});
    // The extent of the changed pixels.
    int const n = m_scene->Width();
    int left = n, right = -1, top = n, bottom = -1;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            if (At(px, x, y) != At(empty, x, y))
            {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
    ASSERT_GE(right, 0) << "nothing drawn";
    EXPECT_NEAR(left + right, n - 1, 2) << "centred east-west";
    EXPECT_NEAR(top + bottom, n - 1, 2) << "centred north-south";
    EXPECT_GT(right - left, 3 * (bottom - top)) << "lies flat with its long side east-west";
}

template <> struct CopySubject<eRenderIsoSurface3D>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(KYR::Host::eScene& scene) { LookDown(scene); }
    static eRenderIsoSurface3D* Make(KYR::Host::eScene&)
    {
        return Surface(WideBand(), 0.0, eVector3T<double>(0.2, 0.8, 0.4), 0.6f);
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(IsoSurface, CopyIdiom, ::testing::Types<eRenderIsoSurface3D>);

// The strategy draws nothing by itself: its copies are checked by the targets they hold.
TEST_F(IsoSurfaceTest, StrategyCopiesShareTheirTargetsAndTheLastHolderFreesThem)
{
    int const orders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    for (auto const& order : orders)
    {
        SCOPED_TRACE(testing::Message()
                     << "destroyed in order " << order[0] << order[1] << order[2]);
        std::unique_ptr<eWOITStrategy> holders[3];
        holders[0].reset(new eWOITStrategy());
        holders[0]->SetSize(16, 16);
        holders[0]->Create();
        Targets const shared = Probe(holders[0].get());
        holders[1].reset(new eWOITStrategy(*holders[0]));
        holders[2].reset(new eWOITStrategy());
        holders[2]->SetSize(8, 8);
        holders[2]->Create();
        Targets const own = Probe(holders[2].get());
        *holders[2] = *holders[0];
        EXPECT_TRUE(Gone(own)) << "the targets it held alone go with the assignment";
        eWOITStrategy& self = *holders[2];
        self = *holders[2];
        {
            eWOITStrategy copy(*holders[2]);
            *holders[2] = copy;
        }
        for (int k = 0; k < 3; ++k)
        {
            holders[order[k]].reset();
            for (int j = k + 1; j < 3; ++j)
            {
                Targets const t = Probe(holders[order[j]].get());
                EXPECT_EQ(t.name[0], shared.name[0]);
                EXPECT_EQ(t.name[1], shared.name[1]);
                EXPECT_EQ(t.width[0], 16);
            }
            EXPECT_EQ(Alive(shared), k < 2);
        }
        EXPECT_TRUE(Gone(shared));
    }
}
