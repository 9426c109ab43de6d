// Hill shading: normalisation of the raster, the colour ramp, queued raster updates from
// another thread, the tile walk, the pass, and what reaches the screen.
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eMaterial.h"
#include "eRenderHillShading.h"
#include <epoxy/gl.h>
#include <atomic>
#include <cmath>
#include <cstring>
#include <thread>

using namespace KYR;

namespace
{

double const kMetresPerDegree = 6378137.0 * 0.017453292519943295;

struct Probe : eRenderHillShading
{
    using eRenderHillShading::eRenderHillShading;
    using eRenderHillShading::m_arTextureUpdates;
    using eRenderHillShading::m_dShadingScale;
    using eRenderHillShading::m_Mutex;
    using eRenderHillShading::m_pColorTableTexture;
    using eRenderHillShading::m_pTechnique;
    using eRenderHillShading::m_pTexture;
    using eRenderHillShading::m_rcBounds;
    size_t Pending()
    {
        eMutexGuard guard(m_Mutex);
        return m_arTextureUpdates->size();
    }
};

template <typename T>
eRasterBlock* Block(int format, std::vector<T> const& values, double lo, double hi,
                    eRect2D bounds = eRect2D(0.0, 1.0, 1.0, 0.0))
{
    auto* block = new eRasterBlock();
    block->m_nPixelFormat = format;
    block->m_nWidth = (int)values.size();
    block->m_nHeight = 1;
    T* data = new T[values.size()];
    std::memcpy(data, values.data(), values.size() * sizeof(T));
    block->m_pData = data;
    block->m_dMinimum = lo;
    block->m_dMaximum = hi;
    block->m_rcBounds = bounds;
    return block;
}

// The normalised floats that Create left for the first upload.
std::vector<float> Normalised(Probe& p)
{
    eTextureInfo* info = p.m_pTexture ? p.m_pTexture->GetTextureInfo() : nullptr;
    if (!info || !info->m_pData)
        return {};
    EXPECT_EQ(info->m_nPixelFormat, 3200);
    EXPECT_EQ(info->m_nSize, info->m_nWidth * info->m_nHeight * 4);
    float const* f = static_cast<float const*>(info->m_pData);
    return std::vector<float>(f, f + info->m_nWidth * info->m_nHeight);
}

eTextureInfo* FloatInfo(int w, int h, float value, int format = 3200)
{
    auto* info = new eTextureInfo();
    info->m_nPixelFormat = format;
    info->m_nWidth = w;
    info->m_nHeight = h;
    float* data = new float[(size_t)w * h];
    for (int i = 0; i < w * h; ++i)
        data[i] = value;
    info->m_pData = data;
    info->m_nSize = w * h * 4;
    return info;
}

int TextureWidth(eTexture* t)
{
    GLint w = 0;
    glBindTexture(GL_TEXTURE_2D, t->GetTextureID());
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
    glBindTexture(GL_TEXTURE_2D, 0);
    return w;
}

// A tile that notes the calls it gets instead of drawing.
struct NotingTile : eTileSet
{
    explicit NotingTile(eRect2D const& r) { m_rcBounds = r; }
    unsigned char RenderShading(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*,
                                eTexture* texture, eRect2D* rect, ePass* pass, unsigned char flag,
                                eTexture* colorTable, double scale, void* reserved) override
    {
        ++calls;
        m_pTexture = texture;
        m_rcRect = *rect;
        m_pPass = pass;
        m_nFlag = flag;
        m_pColor = colorTable;
        m_dScale = scale;
        m_pReserved = reserved;
        return 1;
    }
    int calls = 0;
    eTexture* m_pTexture = nullptr;
    eRect2D m_rcRect;
    ePass* m_pPass = nullptr;
    int m_nFlag = 0;
    eTexture* m_pColor = nullptr;
    double m_dScale = 0.0;
    void* m_pReserved = &calls;
};

struct FixedModel : eGlobeModel
{
    std::vector<eTileSet*>* GetVisibleTileSets(eCamera*) override { return &tiles; }
    std::vector<eTileSet*> tiles;
};

} // namespace

TEST(HillShading, NormalisesEachPixelFormatWithoutClamp)
{
    {
        Probe p(Block<unsigned char>(8, {10, 60, 110, 0, 255}, 10.0, 110.0));
        ASSERT_TRUE(p.Create(nullptr, 0.0, nullptr));
        std::vector<float> v = Normalised(p);
        ASSERT_EQ(v.size(), 5u);
        EXPECT_FLOAT_EQ(v[0], 0.0f);
        EXPECT_FLOAT_EQ(v[1], 0.5f);
        EXPECT_FLOAT_EQ(v[2], 1.0f);
        EXPECT_FLOAT_EQ(v[3], -0.1f); // below the range: no clamp
        EXPECT_FLOAT_EQ(v[4], 2.45f); // the scalar tail after four
        p.UnInitialize(nullptr);
    }
    {
        Probe p(Block<short>(16, {-100, 100, 300, -32768, 32767}, -100.0, 300.0));
        ASSERT_TRUE(p.Create(nullptr, 0.0, nullptr));
        std::vector<float> v = Normalised(p);
        ASSERT_EQ(v.size(), 5u);
        EXPECT_FLOAT_EQ(v[0], 0.0f);
        EXPECT_FLOAT_EQ(v[1], 0.5f);
        EXPECT_FLOAT_EQ(v[2], 1.0f);
        EXPECT_FLOAT_EQ(v[3], (float)(-32668.0 / 400.0)); // read signed
        EXPECT_FLOAT_EQ(v[4], (float)(32867.0 / 400.0));
        p.UnInitialize(nullptr);
    }
    {
        Probe p(Block<unsigned short>(17, {0, 1000, 65535}, 0.0, 1000.0));
        ASSERT_TRUE(p.Create(nullptr, 0.0, nullptr));
        std::vector<float> v = Normalised(p);
        ASSERT_EQ(v.size(), 3u);
        EXPECT_FLOAT_EQ(v[1], 1.0f);
        EXPECT_FLOAT_EQ(v[2], 65.535f); // read unsigned, not -1
        p.UnInitialize(nullptr);
    }
    {
        Probe p(Block<float>(3200, {-5.0f, 0.0f, 2.5f, 5.0f, 15.0f, 1.25f}, -5.0, 5.0));
        ASSERT_TRUE(p.Create(nullptr, 0.0, nullptr));
        EXPECT_EQ(Normalised(p), (std::vector<float>{0.0f, 0.5f, 0.75f, 1.0f, 2.0f, 0.625f}));
        p.UnInitialize(nullptr);
    }
    {
        // Any other format: a texture with no pixels.
        Probe p(Block<int>(32, {1, 2, 3}, 0.0, 3.0));
        ASSERT_TRUE(p.Create(nullptr, 0.0, nullptr));
        ASSERT_NE(p.m_pTexture, nullptr);
        eTextureInfo* info = p.m_pTexture->GetTextureInfo();
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(info->m_pData, nullptr);
        EXPECT_EQ(info->m_nPixelFormat, 0);
        EXPECT_EQ(info->m_nWidth, 3);
        p.UnInitialize(nullptr);
    }
    Probe none(nullptr);
    EXPECT_FALSE(none.Create(nullptr, 0.0, nullptr));
    EXPECT_EQ(none.m_pTexture, nullptr);
}

TEST(HillShading, RampStopsOneStepBelowTheCeilingAndKeepsItsTexture)
{
    Probe p(nullptr);
    EXPECT_EQ(p.GetColorTable()->GetSize(), 0); // made empty on demand
    eColorTable table;
    unsigned int const colours[5] = {ERGBA(255, 0, 0, 255), ERGBA(0, 255, 0, 255),
                                     ERGBA(0, 0, 255, 255), ERGBA(9, 9, 9, 128),
                                     ERGBA(255, 255, 255, 255)};
    table.CreateGradient(5, colours[0], colours[4]);
    for (int i = 0; i < 5; ++i)
        table.SetRGB(i, colours[i]);
    table.SetFloor(0.0);
    table.SetCeiling(5.0);
    p.SetColorTable(&table);
    eTexture* texture = p.m_pColorTableTexture;
    ASSERT_NE(texture, nullptr);
    eImageData* image = texture->GetImageData();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->m_nWidth, 1);
    EXPECT_EQ(image->m_nHeight, 5);
    EXPECT_EQ(image->m_nPitch, 4);
    EXPECT_EQ(image->m_nBitsPerPixel, 32);
    // Pixel i is the colour at i of 0..5: table positions 0, 0.8, 1.6, 2.4, 3.2, so the
    // last entry (white) never shows.
    int const expected[5] = {0, 1, 2, 2, 3};
    for (int i = 0; i < 5; ++i)
    {
        unsigned char const* px = image->m_pData + 4 * i;
        unsigned int c = colours[expected[i]];
        EXPECT_EQ(px[0], EREDVAL((int)c)) << i;
        EXPECT_EQ(px[1], EGREENVAL((int)c)) << i;
        EXPECT_EQ(px[2], EBLUEVAL((int)c)) << i;
        EXPECT_EQ(px[3], EALPHAVAL((int)c)) << i;
    }
    EXPECT_EQ(p.GetColorTable()->GetSize(), 5);

    // Again: the old image is freed (the sanitizer would see a leak), the texture stays.
    eColorTable two;
    two.CreateGradient(2, colours[0], colours[1]);
    p.SetColorTable(&two);
    EXPECT_EQ(p.m_pColorTableTexture, texture);
    ASSERT_NE(texture->GetImageData(), nullptr);
    EXPECT_EQ(texture->GetImageData()->m_nHeight, 2);

    eColorTable empty;
    p.SetColorTable(&empty);
    EXPECT_EQ(p.m_pColorTableTexture, texture);
    EXPECT_EQ(texture->GetImageData()->m_nHeight, 0);
    EXPECT_EQ(texture->GetImageData()->m_pData, nullptr);
    p.UnInitialize(nullptr);
}

TEST(HillShading, StockRampSpansTheBlocksRange)
{
    Probe p(Block<float>(3200, {100.0f, 200.0f}, 100.0, 200.0));
    ASSERT_TRUE(p.Create(nullptr, 0.0, nullptr));
    eColorTable* table = p.GetColorTable();
    EXPECT_EQ(table->GetSize(), 256);
    EXPECT_EQ(table->GetFloor(), 100.0);
    EXPECT_EQ(table->GetCeiling(), 200.0);
    eColorTable stock;
    stock.CreateStockGradient(256, KYR_STOCK_GRADIENT_TERRAIN, 0);
    EXPECT_EQ(table->GetRGB(0), stock.GetRGB(0));
    EXPECT_EQ(table->GetRGB(255), stock.GetRGB(255));
    EXPECT_EQ(p.m_pColorTableTexture->GetImageData()->m_nHeight, 256);
    EXPECT_EQ(p.m_rcBounds, eRect2D(0.0, 1.0, 1.0, 0.0));
    EXPECT_EQ(p.m_dShadingScale, 10000000.0);
    p.UnInitialize(nullptr);
}

class HillShadingScene : public EffectTest
{
protected:
    // A raster over longitudes 0..10 and latitudes 0..20 (map metres), 4 x 4 pixels.
    Probe* AddShading(int format = 3200)
    {
        std::vector<float> v(16);
        for (int i = 0; i < 16; ++i)
            v[(size_t)i] = (float)(i % 4);
        eRect2D bounds(0.0, 20.0 * kMetresPerDegree, 10.0 * kMetresPerDegree, 0.0);
        auto* block = Block<float>(format, v, 0.0, 3.0, bounds);
        block->m_nWidth = block->m_nHeight = 4;
        m_pShading.reset(new Probe(block));
        m_scene->Add(m_pShading.get());
        return m_pShading.get();
    }
    void TearDown() override
    {
        EffectTest::TearDown(); // the scene uninitialises the shading still in it
        m_pShading.reset();
    }
    std::unique_ptr<Probe> m_pShading;
};

TEST_F(HillShadingScene, UpdatesFromAnotherThreadAreAppliedOrDroppedWhileFramesRun)
{
    Probe* p = AddShading();
    m_scene->RenderFrame();
    ASSERT_NE(p->m_pTexture->GetTextureID(), 0u);
    EXPECT_EQ(TextureWidth(p->m_pTexture), 4);

    // The loader waits for a new frame before each batch, so queueing and draining interleave.
    std::atomic<bool> done{false};
    std::atomic<int> frames{0};
    std::thread loader(
        [&]()
        {
            for (int i = 0; i < 60; ++i)
            {
                if (i % 6 == 0)
                    for (int seen = frames; frames == seen;)
                        std::this_thread::yield();
                int size = 8 + (i % 5);
                if (i % 7 == 3)
                    p->UpdateTexture(i, i, FloatInfo(size, size, 0.5f, 99)); // dropped
                else if (i % 7 == 5)
                    p->UpdateTexture(i, i, new eTextureInfo()); // no pixels: dropped
                else
                    p->UpdateTexture(i, i, FloatInfo(size, size, 0.25f));
            }
            // The last raster that goes up is 16 wide; an unknown format behind it uploads
            // nothing.
            p->UpdateTexture(0, 0, FloatInfo(16, 2, 0.75f));
            p->UpdateTexture(0, 0, FloatInfo(32, 32, 0.75f, 1234));
            done = true;
        });
    while (!done)
    {
        m_scene->RenderFrame();
        ++frames;
    }
    loader.join();
    m_scene->RenderFrame();
    EXPECT_EQ(p->Pending(), 0u);
    EXPECT_EQ(TextureWidth(p->m_pTexture), 16);

    // Updates of the byte and 16-bit formats go up as they are.
    auto* bytes = new eTextureInfo();
    bytes->m_nPixelFormat = 17;
    bytes->m_nWidth = 3;
    bytes->m_nHeight = 1;
    bytes->m_pData = new unsigned short[3]{0, 65535, 0};
    p->UpdateTexture(0, 0, bytes);
    m_scene->RenderFrame();
    EXPECT_EQ(TextureWidth(p->m_pTexture), 3);

    // UnInitialize empties a queue that was never drawn.
    p->UpdateTexture(0, 0, FloatInfo(2, 2, 0.0f));
    p->UnInitialize(&m_scene->Engine());
    EXPECT_EQ(p->Pending(), 0u);
    EXPECT_EQ(p->m_pTexture, nullptr);
    EXPECT_EQ(p->Render(&m_scene->Engine(), &m_scene->RenderSystem(), &m_scene->Camera(),
                        &m_scene->Viewport()),
              0);
}

TEST_F(HillShadingScene, OnlyTilesMeetingTheRasterDrawAndUpdatesStillApply)
{
    Probe* p = AddShading();
    FixedModel model;
    NotingTile inside(eRect2D(5.0, 10.0, 15.0, 5.0));     // degrees: overlaps 0..10 x 0..20
    NotingTile outside(eRect2D(40.0, 60.0, 50.0, 50.0));  // far away
    NotingTile touching(eRect2D(10.0, 30.0, 20.0, 20.0)); // shares a corner
    model.tiles = {&outside, nullptr, &inside, &touching};
    m_scene->Engine().SetGlobeModel(&model);
    m_scene->RenderFrame();

    EXPECT_EQ(outside.calls, 0);
    ASSERT_EQ(inside.calls, 1);
    EXPECT_EQ(touching.calls, 1);
    EXPECT_EQ(inside.m_pTexture, p->m_pTexture);
    EXPECT_EQ(inside.m_pColor, p->m_pColorTableTexture);
    EXPECT_EQ(inside.m_pPass, p->m_pTechnique->GetPass(0));
    EXPECT_EQ(inside.m_nFlag, 1);
    EXPECT_EQ(inside.m_dScale, 10000000.0);
    EXPECT_EQ(inside.m_pReserved, nullptr);
    // The map rectangle arrives in logical degrees.
    EXPECT_NEAR(inside.m_rcRect.left, 0.0, 1e-9);
    EXPECT_NEAR(inside.m_rcRect.right, 10.0, 1e-9);
    EXPECT_NEAR(inside.m_rcRect.top, 20.0, 1e-9);
    EXPECT_NEAR(inside.m_rcRect.bottom, 0.0, 1e-9);

    // Nothing meets the raster: no tile draws, but the queue is still drained.
    model.tiles = {&outside};
    p->UpdateTexture(0, 0, FloatInfo(6, 6, 0.5f));
    m_scene->RenderFrame();
    EXPECT_EQ(outside.calls, 0);
    EXPECT_EQ(inside.calls, 1);
    EXPECT_EQ(p->Pending(), 0u);
    EXPECT_EQ(TextureWidth(p->m_pTexture), 6);
    m_scene->Engine().SetGlobeModel(&m_scene->GlobeModel());
}

TEST_F(HillShadingScene, PassSettingsAndTheAssertionOutsideMode1)
{
    // The default camera on the globe: the pass is made, with no report.
    KYR::Host::ClearAssertReports();
    Probe* p = AddShading();
    std::vector<eRecord> rec = RecordFrame();
    EXPECT_TRUE(KYR::Host::GetAssertReports().empty());
    std::vector<eRecord> queued = Of(rec, eRecord::Queue);
    ASSERT_EQ(queued.size(), 1u);
    EXPECT_EQ(queued[0].op, "AddSolidTextureRenderable");
    EXPECT_EQ(queued[0].first, 6);
    ASSERT_NE(p->m_pTechnique, nullptr);
    EXPECT_EQ(p->m_pTechnique->GetNumPasses(), 1);
    ePass* pass = p->m_pTechnique->GetPass(0);
    EXPECT_EQ(pass->GetProgram().Str(), "ShadingTile");
    EXPECT_EQ((int)pass->GetLightModel(), 4);
    EXPECT_EQ(pass->GetAutoMipMap(), 1);
    EXPECT_EQ(pass->GetDepthCheckEnabled(), 1);
    EXPECT_EQ(pass->GetDepthWriteEnabled(), 1);
    EXPECT_EQ(pass->GetDepthFunc(), eCF_LESS_EQUAL);
    EXPECT_EQ(pass->GetDepthBiasSlopeScale(), 0.0f);
    EXPECT_EQ(pass->GetDepthBiasConstant(), 0.0f);
    EXPECT_EQ(pass->IsLightingEnabled(), 0);
    EXPECT_EQ(pass->GetAmbient(), eVector4T<float>(0.05f, 0.05f, 0.05f, 1.0f));
    EXPECT_EQ(pass->GetDiffuse(), eVector4T<float>(0.9f, 0.9f, 0.9f, 1.0f));
    EXPECT_EQ(pass->GetSpecular(), eVector4T<float>(0.05f, 0.05f, 0.05f, 1.0f));
    EXPECT_EQ(pass->GetShininess(), 12.0f);
    // The tiles draw through the pass: the program ran and drew.
    EXPECT_FALSE(Of(rec, eRecord::Draw).empty());

    // A flat 2-D view of the plane map: one report when the technique is made, then a blank
    // pass.
    Probe other(nullptr);
    m_scene->Camera().SetSceneMode(eSM_PLANE);
    m_scene->Camera().SetDimensionMode(eDM_2D);
    KYR::Host::ClearAssertReports();
    eRenderQueue queue;
    other.UpdateRenderQueue(&m_scene->Engine(), &m_scene->Camera(), &m_scene->Viewport(), &queue);
    other.UpdateRenderQueue(&m_scene->Engine(), &m_scene->Camera(), &m_scene->Viewport(), &queue);
    auto reports = KYR::Host::GetAssertReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].expression, "false");
    EXPECT_EQ(reports[0].file, "Src/RenderEffect/eRenderHillShading");
    EXPECT_EQ(reports[0].line, 300u);
    ASSERT_NE(other.m_pTechnique, nullptr);
    EXPECT_TRUE(other.m_pTechnique->GetPass(0)->GetProgram().IsEmpty());
    EXPECT_EQ(queue.GetQueueGroup(6)->GetSolids().size(), 2u);
}

TEST_F(HillShadingScene, ShadedRasterShowsInsideItsRectangleOnly)
{
    m_scene->Camera().LookAt(10.0, 10.0, 3.0e6, 0.0, 0.0);
    Probe* p = AddShading();
    eColorTable red;
    red.CreateGradient(8, ERGBA(255, 0, 0, 255), ERGBA(255, 0, 0, 255));
    p->SetColorTable(&red);
    m_scene->RenderFrame();
    std::vector<unsigned char> in = Pixel(24, 48);  // west of 10 E: on the raster
    std::vector<unsigned char> out = Pixel(72, 48); // east of 10 E: no raster
    EXPECT_GT(in[0], 150);
    EXPECT_LT(in[1], 20);
    EXPECT_LT(in[2], 20);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 0);
    EXPECT_EQ(out[2], 0);
}

TEST_F(HillShadingScene, ThreadQueueingThroughACopyReachesTheTextureTheyShare)
{
    Probe* p = AddShading();
    m_scene->RenderFrame();
    // The copy shares the texture, the queue and its lock; the scene draws the original.
    Probe copy(*p);
    int const kRounds = 10000;
    std::atomic<bool> done{false};
    std::atomic<int> frames{0};
    std::thread loader(
        [&]()
        {
            for (int i = 0; i < kRounds; ++i)
            {
                if (i % 500 == 0)
                    for (int seen = frames; frames == seen && !done;)
                        std::this_thread::yield();
                copy.UpdateTexture(0, 0, FloatInfo(1 + i % 7, 1, 0.5f));
            }
            copy.UpdateTexture(0, 0, FloatInfo(9, 1, 0.5f));
            done = true;
        });
    while (!done)
    {
        m_scene->RenderFrame();
        ++frames;
    }
    loader.join();
    m_scene->RenderFrame();
    EXPECT_EQ(copy.Pending(), 0u);
    EXPECT_EQ(TextureWidth(copy.m_pTexture), 9);

    // Uninitialised, the copy leaves the queue to the original, which still has its texture.
    copy.UpdateTexture(0, 0, FloatInfo(3, 1, 0.5f));
    copy.UnInitialize(&m_scene->Engine());
    EXPECT_EQ(copy.Pending(), 0u);
    EXPECT_EQ(p->Pending(), 1u);
    m_scene->RenderFrame();
    EXPECT_EQ(TextureWidth(p->m_pTexture), 3);
}

// The shading base draws nothing itself; its copies share the raster grid.
template <> struct CopySubject<eRenderShading>
{
    static constexpr bool kSamePixels = true;
    static constexpr bool kDraws = false;
    static eRenderShading* Make(Host::eScene&)
    {
        auto* shading = new eRenderShading();
        eRasterGrid grid;
        grid.m_dCellX = grid.m_dCellY = 0.5;
        shading->SetRasterGrid(&grid);
        return shading;
    }
};

// A red raster west of 10 E over the host's terrain tiles.
template <> struct CopySubject<eRenderHillShading>
{
    static constexpr bool kSamePixels = true;
    static void Prepare(Host::eScene& scene)
    {
        scene.Camera().LookAt(10.0, 10.0, 3.0e6, 0.0, 0.0);
        scene.Camera().SetDimensionMode((eDimensionMode)1);
    }
    static eRenderHillShading* Make(Host::eScene&)
    {
        std::vector<float> v(16);
        for (int i = 0; i < 16; ++i)
            v[(size_t)i] = (float)(i % 4);
        eRect2D bounds(0.0, 20.0 * kMetresPerDegree, 10.0 * kMetresPerDegree, 0.0);
        eRasterBlock* block = Block<float>(ePF_FLOAT, v, 0.0, 3.0, bounds);
        block->m_nWidth = block->m_nHeight = 4;
        auto* shading = new eRenderHillShading(block);
        eColorTable red;
        red.CreateGradient(8, ERGBA(255, 0, 0, 255), ERGBA(255, 0, 0, 255));
        shading->SetColorTable(&red);
        // Queued for the first frame, where its unknown format leaves the texture as it is.
        shading->UpdateTexture(0, 0, FloatInfo(4, 4, 1.0f, 99));
        return shading;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Shading, CopyIdiom, ::testing::Types<eRenderShading>);
INSTANTIATE_TYPED_TEST_SUITE_P(HillShading, CopyIdiom, ::testing::Types<eRenderHillShading>);
