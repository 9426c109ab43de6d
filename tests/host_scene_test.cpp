// A whole frame through the host: the queue, the pass, the draw, and what the
// recorder sees of it.
#include "eHostTestMesh.h"
#include "eRecorder.h"
#include "eScene.h"
#include <gtest/gtest.h>

using namespace KYR;
using Host::eRecord;

namespace
{

std::vector<unsigned char> PixelAt(Host::eScene& scene, int x, int y)
{
    std::vector<unsigned char> px = scene.ReadPixels();
    size_t i = ((size_t)y * scene.Width() + x) * 4;
    return {px[i], px[i + 1], px[i + 2], px[i + 3]};
}

} // namespace

TEST(HostScene, FrameDrawsTheLitSphereOverTheClearColour)
{
    Host::eScene scene(128, 96);
    ASSERT_TRUE(scene.IsReady());
    scene.SetClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    scene.Camera().LookAt(100.0, 30.0, 2.2e7, 0.0, 0.0);
    Host::eHostTestMesh sphere(6378137.0);
    sphere.SetColor(eVector4T<float>(1.0f, 0.0f, 0.0f, 1.0f));
    scene.Add(&sphere);
    unsigned long long before = scene.Engine().GetFrameNumber();
    scene.RenderFrame();
    EXPECT_EQ(scene.Engine().GetFrameNumber(), before + 1);

    // Facing the camera, the sphere is lit: red, and brighter than its ambient part.
    auto centre = PixelAt(scene, 64, 48);
    EXPECT_GT(centre[0], 150);
    EXPECT_LT(centre[1], 30);
    EXPECT_LT(centre[2], 30);
    auto corner = PixelAt(scene, 1, 1);
    EXPECT_EQ(corner[0], 0);
    EXPECT_EQ(corner[1], 255);
    EXPECT_EQ(corner[2], 0);

    // An invisible effect queues nothing: the centre shows the clear colour.
    sphere.m_bVisible = 0;
    scene.RenderFrame();
    EXPECT_EQ(PixelAt(scene, 64, 48)[1], 255);
}

TEST(HostScene, RecorderSeesQueuePassUniformsAndDrawInOrder)
{
    Host::eScene scene(64, 64);
    ASSERT_TRUE(scene.IsReady());
    scene.Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
    Host::eHostTestMesh sphere(6378137.0, 8, 4);
    scene.Add(&sphere);
    Host::eRecorder::Get().Start();
    scene.RenderFrame();
    Host::eRecorder::Get().Stop();
    std::vector<eRecord> all = Host::eRecorder::Get().Records();

    std::vector<std::string> sequence;
    for (auto const& r : all)
        if (r.kind == eRecord::Queue || r.kind == eRecord::BeginPass || r.kind == eRecord::EndPass ||
            r.kind == eRecord::Draw)
            sequence.push_back(r.op.empty() ? "EndPass" : r.op);
        else if (r.kind == eRecord::Uniform)
            sequence.push_back(r.uniform);
    std::vector<std::string> want = {"AddSolidRenderable", "Color",     "u_worldMatrix",
                                     "u_viewMatrix",       "u_projectionMatrix",
                                     "u_lightingEnabled",  "u_ambient", "u_diffuse",
                                     "u_color",            "DrawIndexed", "EndPass"};
    EXPECT_EQ(sequence, want);
    for (auto const& r : all)
        if (r.kind == eRecord::Queue)
        {
            EXPECT_EQ(r.first, 3);
            EXPECT_EQ(r.object, &sphere);
        }
        else if (r.kind == eRecord::Draw)
        {
            EXPECT_EQ(r.mode, (int)eOT_TRIANGLE_LIST);
            EXPECT_EQ(r.count, 8 * 4 * 6);
        }
        else if (r.uniform == "u_lightingEnabled")
        {
            EXPECT_EQ(r.values, std::vector<double>{1.0});
        }
}

TEST(HostScene, TransparentEntriesDrawFarToNear)
{
    struct Probe : eRenderable
    {
        double depth;
        std::vector<int>* order;
        int id;
        Probe(double d, std::vector<int>* o, int i) : depth(d), order(o), id(i) {}
        double GetSquaredViewDepth(eCamera*) override { return depth; }
        unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                        eRenderQueue* q) override
        {
            q->GetQueueGroup(8)->AddTransparentRenderable(nullptr, this);
            return 1;
        }
        unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override
        {
            order->push_back(id);
            return 1;
        }
    };
    Host::eScene scene(32, 32);
    ASSERT_TRUE(scene.IsReady());
    std::vector<int> order;
    Probe nearOne(1.0, &order, 1), farOne(9.0, &order, 2), middle(4.0, &order, 3);
    scene.Add(&nearOne);
    scene.Add(&farOne);
    scene.Add(&middle);
    scene.RenderFrame();
    EXPECT_EQ(order, (std::vector<int>{2, 3, 1}));
}
