// Tile objects: rasters on consecutive units over application tile rectangles, the shared
// mask, the gradation hand-over between threads, and the pixels of the grey-colour program.
#include "eTilePatch.h"
#include "CopyIdiom.h"
#include "EffectFixture.h"
#include "eFile.h"
#include "eGradationStrategy.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eProgramLibrary.h"
#include "eRenderGrayColorGradationObject.h"
#include "eRenderGrayTerrainObject.h"
#include "eRenderGrayTerrianGradationObject.h"
#include "eTexture.h"
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <set>
#include <thread>

using namespace KYR;
using Host::eRecord;

namespace
{

eMaterial* Material(char const* program)
{
    eMaterial* material = new eMaterial();
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProgram(program);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(0);
    return material;
}

eString Icon(char const* name)
{
    return eSystem::GetWorkPath() + "Resources/Icons/" + name;
}

template <typename Base> struct Probe : Base
{
    using Base::m_arTextures;
    using Base::m_dSquaredViewDepth;
    using Base::m_nPixelFormat;
    using Base::s_pMaskTexture;
    using Base::s_refCount;
};

// A 1 x 1 float raster that keeps a register of the living ones.
struct Counted : eTexture
{
    static inline std::mutex s_lock;
    static inline std::set<eTexture*> s_alive;
    explicit Counted(float v)
    {
        eTextureInfo* info = new eTextureInfo();
        *(float*)info->Allocate(4) = v;
        info->m_nPixelFormat = ePF_FLOAT;
        info->m_nWidth = info->m_nHeight = 1;
        SetTextureInfo(info);
        m_bOwnPicture = 1;
        std::lock_guard<std::mutex> lock(s_lock);
        s_alive.insert(this);
    }
    ~Counted() override
    {
        std::lock_guard<std::mutex> lock(s_lock);
        s_alive.erase(this);
    }
};

std::vector<eRecord> Named(std::vector<eRecord> const& all, std::string const& name)
{
    std::vector<eRecord> out;
    for (auto const& r : all)
        if (r.kind == eRecord::Uniform && r.uniform == name)
            out.push_back(r);
    return out;
}

// Units that got a non-zero texture in this frame, before EndRender cleared them.
std::vector<long long> BoundUnits(std::vector<eRecord> const& all)
{
    std::vector<long long> units;
    for (auto const& r : all)
        if (r.kind == eRecord::BindTexture && r.count != 0)
            units.push_back(r.first);
    return units;
}

} // namespace

class TileTest : public EffectTest
{
protected:
    template <typename T> T* Make(char const* program)
    {
        T* object = new T();
        object->AddMesh(Host::MakeTilePatch(8));
        object->SetMaterial(Material(program));
        m_objects.emplace_back(object);
        return object;
    }
    std::vector<eRecord> WarmThenRecord()
    {
        m_scene->RenderFrame();
        return RecordFrame();
    }
    void TearDown() override
    {
        EffectTest::TearDown();
        m_objects.clear();
    }
    std::vector<std::unique_ptr<eRenderable>> m_objects;
};

TEST_F(TileTest, UnitsFollowTheRastersInBothBranches)
{
    unsigned char raster[4] = {10, 20, 30, 40};
    struct Grey : Probe<eRenderGrayColorObject>
    {
        using eRenderGrayColorObject::m_pColorTableTexture;
    };
    auto* grey = Make<Grey>("GrayColorTile");
    grey->AddTexture(raster, 2, 2, ePF_UBYTE);
    grey->AddTexture(raster, 2, 2, ePF_UBYTE);
    grey->SetColorTable(Icon("colortable1.png"), eTFM_LINEAR);
    grey->SetMaskTexture(Icon("flow.png"));
    grey->AddTileBound(eRect2D(-10, 10, 10, -10));
    m_scene->Add(grey);
    auto all = WarmThenRecord();
    EXPECT_EQ(BoundUnits(all), (std::vector<long long>{0, 1, 2, 3}));
    std::vector<long long> ids;
    for (auto const& r : Of(all, eRecord::BindTexture))
        if (r.count != 0)
            ids.push_back(r.count);
    std::vector<long long> want;
    for (eTexture* t : {grey->m_arTextures[0], grey->m_arTextures[1], grey->m_pColorTableTexture,
                        Grey::s_pMaskTexture})
        want.push_back(t->GetTextureID());
    EXPECT_EQ(ids, want);

    m_scene->Remove(grey);
    auto* terrain = Make<eRenderGrayTerrainObject>("GrayTerrainTile");
    terrain->AddTexture(raster, 2, 2, ePF_UBYTE);
    terrain->AddTileBound(eRect2D(-10, 10, 10, -10));
    m_scene->Add(terrain);
    EXPECT_EQ(BoundUnits(WarmThenRecord()), (std::vector<long long>{0, 1}));
}

TEST_F(TileTest, EachTileDrawsTheFirstMeshWithItsRectangle)
{
    auto* tiles = Make<eRenderTileObject>("GrayColorTile");
    tiles->AddMesh(Host::MakeTilePatch(2)); // never drawn
    unsigned char raster[1] = {200};
    tiles->AddTexture(raster, 1, 1, ePF_UBYTE);
    tiles->AddTileBound(eRect2D(-30, 20, -10, 0));
    tiles->AddTileBound(eRect2D(0, 10, 25, -5));
    m_scene->Add(tiles);
    auto all = WarmThenRecord();
    auto rects = Named(all, "u_tileRect");
    auto draws = Of(all, eRecord::Draw);
    ASSERT_EQ(rects.size(), 2u);
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(rects[0].values, (std::vector<double>{-30, 20, 20, 20}));
    EXPECT_EQ(rects[1].values, (std::vector<double>{0, 10, 25, 15}));
    for (auto const& d : draws)
        EXPECT_EQ(d.count, 8 * 8 * 6);

    tiles->ClearTileBound();
    all = RecordFrame();
    EXPECT_TRUE(Of(all, eRecord::Draw).empty());
    EXPECT_EQ(Named(all, "u_pixelFormat").size(), 1u);      // StartRender ran
    EXPECT_EQ(Named(all, "u_projectionMatrix").size(), 2u); // and EndRender restored it
}

TEST_F(TileTest, StrengthAndSortDepth)
{
    auto* tiles = Make<eRenderTileObject>("GrayColorTile");
    tiles->AddTileBound(eRect2D(-10, 10, 10, -10));
    m_scene->Add(tiles);
    for (int percent : {100, 0, 250, -40})
    {
        tiles->SetTextureTrans(percent);
        auto sent = Named(RecordFrame(), "u_textureTrans");
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_FLOAT_EQ((float)sent[0].values[0], (float)(percent * 0.01));
    }
    EXPECT_EQ(tiles->GetSquaredViewDepth(nullptr), 0.0);
    tiles->SetRelativeHeight(2500.5f);
    EXPECT_EQ(tiles->GetSquaredViewDepth(nullptr), (double)(1000000.0f - 2500.5f));
}

TEST_F(TileTest, SharedMaskLastSetWinsAndDiesWithTheLastObject)
{
    using P = Probe<eRenderGrayColorObject>;
    ASSERT_EQ(P::s_refCount, 0);
    unsigned char raster[1] = {1};
    auto* grey = Make<eRenderGrayColorObject>("GrayColorTile");
    auto* terrain = Make<eRenderGrayTerrainObject>("GrayTerrainTile");
    EXPECT_EQ(P::s_refCount, 2);
    for (eRenderTileObject* t : {(eRenderTileObject*)grey, (eRenderTileObject*)terrain})
    {
        t->AddTexture(raster, 1, 1, ePF_UBYTE);
        t->AddTileBound(eRect2D(-10, 10, 10, -10));
        m_scene->Add(t);
    }
    grey->SetMaskTexture(Icon("flow.png"));
    terrain->SetMaskTexture(Icon("ScatterPoint.png"));
    auto binds = Of(WarmThenRecord(), eRecord::BindTexture);
    ASSERT_NE(P::s_pMaskTexture, nullptr);
    EXPECT_EQ(P::s_pMaskTexture->GetWidth(), 1024); // the atlas, not the flow picture
    long long mask = P::s_pMaskTexture->GetTextureID();
    std::vector<long long> maskUnits;
    for (auto const& r : binds)
        if (r.count == mask)
            maskUnits.push_back(r.first);
    EXPECT_EQ(maskUnits, (std::vector<long long>{2, 1})); // grey: n + 1, terrain: n

    m_scene->Remove(grey);
    m_scene->Remove(terrain);
    m_objects.pop_back();
    EXPECT_NE(P::s_pMaskTexture, nullptr);
    m_objects.pop_back();
    EXPECT_EQ(P::s_pMaskTexture, nullptr);
    EXPECT_EQ(P::s_refCount, 0);
    eRenderTileObject next;
    EXPECT_EQ(P::s_pMaskTexture, nullptr);
}

TEST_F(TileTest, LightningLandsWithinTwentyDegreesOfTheLookAt)
{
    auto* terrain = Make<eRenderGrayTerrainObject>("GrayTerrainTile");
    terrain->AddTileBound(eRect2D(-10, 10, 10, -10));
    terrain->SetIsLightning(1);
    m_scene->Camera().LookAt(30.0, 10.0, 2.0e7, 0.0, 0.0);
    m_scene->Add(terrain);
    m_scene->RenderFrame();
    std::srand(7);
    double r[3];
    for (double& v : r)
        v = (double)(std::rand() & 0x7FFF);
    std::srand(7);
    auto flash = Named(RecordFrame(), "u_lightning");
    ASSERT_EQ(flash.size(), 1u);
    EXPECT_NEAR(flash[0].values[0], r[0] * 40.0 / 32767.0 + 10.0, 1e-3);
    EXPECT_NEAR(flash[0].values[1], r[1] * 40.0 / 32767.0 - 10.0, 1e-3);
    EXPECT_NEAR(flash[0].values[2], r[2] * 3.0 / 32767.0, 1e-5);
    EXPECT_EQ(flash[0].values[3], 0.0);
    terrain->SetIsLightning(0);
    EXPECT_TRUE(Named(RecordFrame(), "u_lightning").empty());
}

TEST_F(TileTest, GradationTakesTexturesFromAProducerThread)
{
    using G = Probe<eRenderGrayColorGradationObject>;
    auto* fade = Make<G>("GrayColorTile");
    auto* strategy = new eGradationStrategy();
    strategy->SetTimeStride(4);
    strategy->SetCurrentTime(1);
    fade->SetGradationStrategy(strategy);
    fade->AddTileBound(eRect2D(-10, 10, 10, -10));
    m_scene->Add(fade);

    int const kHandOvers = 24;
    std::atomic<bool> done(false);
    std::thread producer(
        [&]
        {
            for (int i = 0; i < kHandOvers; ++i)
            {
                eTexture* t = new Counted((float)i);
                for (bool handed = false; !handed; std::this_thread::yield())
                {
                    eMutexGuard lock(fade->GetMutex());
                    // A well-behaved producer waits until the last texture was taken.
                    if (strategy->m_pPendingTexture1 || strategy->m_pPendingTexture2)
                        continue;
                    if (i % 2 == 0)
                        strategy->SetTexture1(t, ePF_FLOAT);
                    else
                        strategy->SetTexture2(t);
                    handed = true;
                }
            }
            done = true;
        });
    int frames = 0;
    while (!done || frames < 3)
    {
        m_scene->RenderFrame();
        ++frames;
        eMutexGuard lock(fade->GetMutex());
        std::vector<eTexture*> view;
        for (eTexture* t : {strategy->m_pTexture1, strategy->m_pTexture2})
            if (t)
                view.push_back(t);
        ASSERT_EQ(std::vector<eTexture*>(fade->m_arTextures.begin(), fade->m_arTextures.end()),
                  view);
    }
    producer.join();
    m_scene->RenderFrame(); // takes the last hand-over
    EXPECT_EQ(fade->m_nPixelFormat, ePF_FLOAT);
    ASSERT_EQ(fade->m_arTextures.size(), 2u);
    // All older rasters were retired; only the pair in use is alive.
    EXPECT_EQ(Counted::s_alive,
              (std::set<eTexture*>(fade->m_arTextures.begin(), fade->m_arTextures.end())));
    auto ratio = Named(RecordFrame(), "u_timeRatio");
    ASSERT_EQ(ratio.size(), 1u);
    EXPECT_FLOAT_EQ((float)ratio[0].values[0], 0.25f);
    m_scene->Remove(fade);
    m_objects.clear();
    EXPECT_TRUE(Counted::s_alive.empty());
}

TEST_F(TileTest, OnlyASecondTextureSitsOnUnitZeroInTheOldFormat)
{
    using G = Probe<eRenderGrayTerrianGradationObject>;
    auto* fade = Make<G>("GrayTerrainTile");
    auto* strategy = new eGradationStrategy();
    strategy->m_nPixelFormat = ePF_SHORT;
    eTexture* second = new Counted(5.0f);
    strategy->SetTexture2(second);
    fade->SetGradationStrategy(strategy);
    fade->AddTileBound(eRect2D(-10, 10, 10, -10));
    m_scene->Add(fade);
    auto all = WarmThenRecord();
    EXPECT_EQ(fade->m_nPixelFormat, ePF_UBYTE);
    auto format = Named(all, "u_pixelFormat");
    ASSERT_EQ(format.size(), 1u);
    EXPECT_EQ(format[0].values[0], ePF_UBYTE);
    ASSERT_FALSE(BoundUnits(all).empty());
    EXPECT_EQ(BoundUnits(all)[0], 0);
    auto binds = Of(all, eRecord::BindTexture);
    EXPECT_EQ(binds[0].count, (long long)second->GetTextureID());
    EXPECT_EQ(Named(all, "u_timeRatio")[0].values[0], 1.0); // the defaults: the fade has ended
}

TEST_F(TileTest, RasterShowsInTableColoursInsideTheVisibleRange)
{
    auto* grey = Make<eRenderGrayColorObject>("GrayColorTile");
    // Each value covers 20 degrees, so that filtering leaves it whole around its middle.
    float values[8] = {0.0f, 0.0f, 10.0f, 10.0f, 20.0f, 20.0f, 30.0f, 30.0f};
    grey->AddTexture((unsigned char*)values, 8, 1, ePF_FLOAT);
    grey->SetColorTable(Icon("colortable1.png"), eTFM_LINEAR);
    grey->SetTextureBound(eRect2D(-40, 10, 40, -10), 1.0);
    grey->AddTileBound(eRect2D(-40, 10, 0, -10));
    grey->AddTileBound(eRect2D(0, 10, 40, -10));
    grey->SetStartVisibleValue(5.0);
    grey->SetEndVisibleValue(25.0);
    grey->SetIsResetNormalize(1);
    m_scene->Add(grey);
    m_scene->RenderFrame();

    std::unique_ptr<eTexture> table(eTextureOperator::GetSingleton().CreateTexture(
        Icon("colortable1.png"), eTWM_CLAMP_TO_EDGE, eTFM_LINEAR));
    ASSERT_TRUE(table && table->GetImageData());
    unsigned char const* row = table->GetImageData()->m_pData;
    auto pixelAt = [&](double lon, double lat)
    {
        eVector3T<double> w = eMathEngine::SphericalToCartesian(
            lon * 0.017453292519943295, lat * 0.017453292519943295, 6378237.0);
        eVector3T<double> s = m_scene->Camera().Project(w);
        return Pixel((int)s.x, (int)(m_scene->Height() - s.y));
    };
    // Values 10 and 20 map to 0.25 and 0.75 of the table, between two of its 256 texels.
    for (auto probe : {std::make_pair(-10.0, 0.25), std::make_pair(10.0, 0.75)})
    {
        double at = probe.second * 255.0;
        int i = (int)at;
        double f = at - i;
        std::vector<unsigned char> px = pixelAt(probe.first, 0.0);
        for (int c = 0; c < 3; ++c)
        {
            double want =
                (row[i * 4 + c] * (1 - f) + row[i * 4 + 4 + c] * f) * (row[i * 4 + 3] / 255.0);
            EXPECT_NEAR(px[c], want, 4.0) << "lon " << probe.first << " channel " << c;
        }
    }
    for (double lon : {-33.0, 33.0}) // values 0 and 30 lie outside 5..25
        EXPECT_EQ(pixelAt(lon, 0.0), (std::vector<unsigned char>{0, 0, 0, 255}));
    EXPECT_EQ(pixelAt(-10.0, 20.0), (std::vector<unsigned char>{0, 0, 0, 255})); // no tile there
}

TEST_F(TileTest, ThreadCopiesOfAGradationObjectShareTheStrategyLockAndTextures)
{
    m_scene.reset(new Host::eScene(16, 16)); // ten thousand frames: keep them small
    m_scene->Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
    using G = Probe<eRenderGrayColorGradationObject>;
    auto* fade = Make<G>("GrayColorTile");
    auto* strategy = new eGradationStrategy();
    fade->SetGradationStrategy(strategy);
    fade->AddTileBound(eRect2D(-10, 10, 10, -10));
    // Both copies are drawn; the producer hands over through the copy's lock.
    auto* copy = new G(*fade);
    m_objects.emplace_back(copy);
    m_scene->Add(fade);
    m_scene->Add(copy);

    int const kRounds = 10000;
    std::atomic<bool> done(false);
    std::thread producer(
        [&]
        {
            for (int i = 0; i < kRounds; ++i)
            {
                eTexture* t = new Counted((float)i);
                for (bool handed = false; !handed; std::this_thread::yield())
                {
                    eMutexGuard lock(copy->GetMutex());
                    if (strategy->m_pPendingTexture1 || strategy->m_pPendingTexture2)
                        continue;
                    if (i % 2 == 0)
                        strategy->SetTexture1(t, ePF_FLOAT);
                    else
                        strategy->SetTexture2(t);
                    handed = true;
                }
            }
            done = true;
        });
    while (!done)
        m_scene->RenderFrame();
    producer.join();
    m_scene->RenderFrame();
    // Every raster but the pair in use was retired once, whichever copy took it.
    ASSERT_EQ(fade->m_arTextures.size(), 2u);
    EXPECT_EQ(std::vector<eTexture*>(copy->m_arTextures.begin(), copy->m_arTextures.end()),
              std::vector<eTexture*>(fade->m_arTextures.begin(), fade->m_arTextures.end()));
    EXPECT_EQ(Counted::s_alive,
              (std::set<eTexture*>(fade->m_arTextures.begin(), fade->m_arTextures.end())));
    m_scene->Remove(fade);
    m_objects.erase(m_objects.begin()); // the original goes first; the copy keeps the pair
    EXPECT_EQ(Counted::s_alive.size(), 2u);
    m_scene->RenderFrame();
    m_objects.clear();
    EXPECT_TRUE(Counted::s_alive.empty());
}

namespace
{

// A tile object as an application sets it up: the patch, a material naming the program, one
// tile over the view's centre and a 4 x 2 byte raster.
template <typename T> T* TileSubject(char const* program)
{
    T* object = new T();
    object->AddMesh(Host::MakeTilePatch(8));
    object->SetMaterial(Material(program));
    unsigned char raster[8] = {40, 90, 140, 190, 240, 190, 140, 90};
    object->AddTexture(raster, 4, 2, ePF_UBYTE);
    object->SetTextureBound(eRect2D(-30, 20, 30, -20), 1.0);
    object->AddTileBound(eRect2D(-30, 20, 30, -20));
    object->SetMaskTexture(Icon("flow.png"));
    return object;
}

// A strategy with two byte rasters waiting for the first frame.
eGradationStrategy* TwoRasters()
{
    unsigned char a[4] = {30, 90, 150, 210}, b[4] = {210, 150, 90, 30};
    auto* strategy = new eGradationStrategy();
    strategy->SetTimeStride(4);
    strategy->SetCurrentTime(1);
    strategy->SetTexture1(eTextureOperator::GetSingleton().CreateTexture(
                              a, 2, 2, ePF_UBYTE, eTWM_CLAMP_TO_EDGE, eTFM_LINEAR),
                          ePF_UBYTE);
    strategy->SetTexture2(eTextureOperator::GetSingleton().CreateTexture(
        b, 2, 2, ePF_UBYTE, eTWM_CLAMP_TO_EDGE, eTFM_LINEAR));
    return strategy;
}

// The blend object draws its meshes as they are and sends only the family's uniforms: the
// application places the patch and sets the rest of the program's state itself.
void PlacePatch(void*)
{
    eRenderProgram* rp = Host::eProgramLibrary::Get().Find("GrayColorTile");
    eProgram* p = rp->GetProgram();
    int const* role = rp->GetUniform()->m_nCustom;
    float rect[4] = {-30.0f, 20.0f, 60.0f, 40.0f};
    p->Uniform1i(role[4], 0);          // globe
    p->Uniform1f(role[5], 100.0f);     // relative height
    p->UniformVector4(role[6], rect);  // texture rectangle
    p->Uniform1f(role[7], 1.0f);       // texture scale
    p->Uniform1i(role[8], 0);          // flat
    p->UniformVector4(role[11], rect); // tile rectangle
    p->Uniform1f(role[12], 0.0f);      // visible from
    p->Uniform1f(role[13], 255.0f);    // visible to
    p->Uniform1i(role[14], 0);
    p->Uniform1f(role[15], 0.0f); // no colour table: grey
}

} // namespace

template <> struct CopySubject<eRenderTextureBlendObject>
{
    static constexpr bool kSamePixels = true;
    static eRenderTextureBlendObject* Make(Host::eScene&)
    {
        auto* object = new eRenderTextureBlendObject();
        object->AddMesh(Host::MakeTilePatch(8));
        object->SetMaterial(Material("GrayColorTile"));
        unsigned char raster[4] = {60, 120, 180, 240};
        object->AddTexture(raster, 2, 2, ePF_UBYTE);
        object->SetMaskTexture(Icon("flow.png"));
        object->connectCallbackRender(nullptr, PlacePatch);
        return object;
    }
};

template <> struct CopySubject<eRenderTileObject>
{
    static constexpr bool kSamePixels = true;
    static eRenderTileObject* Make(Host::eScene&)
    {
        // The relief program: the plain tile object sends no value range to show.
        return TileSubject<eRenderTileObject>("GrayTerrainTile");
    }
};

template <> struct CopySubject<eRenderGrayColorObject>
{
    static constexpr bool kSamePixels = true;
    static eRenderGrayColorObject* Make(Host::eScene&)
    {
        auto* grey = TileSubject<eRenderGrayColorObject>("GrayColorTile");
        grey->SetColorTable(Icon("colortable1.png"), eTFM_LINEAR);
        grey->SetStartVisibleValue(0.0);
        grey->SetEndVisibleValue(255.0);
        return grey;
    }
};

template <> struct CopySubject<eRenderGrayTerrainObject>
{
    static constexpr bool kSamePixels = true;
    static eRenderGrayTerrainObject* Make(Host::eScene&)
    {
        return TileSubject<eRenderGrayTerrainObject>("GrayTerrainTile");
    }
};

template <> struct CopySubject<eRenderGrayColorGradationObject>
{
    static constexpr bool kSamePixels = true;
    static eRenderGrayColorGradationObject* Make(Host::eScene&)
    {
        auto* fade = TileSubject<eRenderGrayColorGradationObject>("GrayColorTile");
        fade->SetColorTable(Icon("colortable1.png"), eTFM_LINEAR);
        fade->SetStartVisibleValue(0.0);
        fade->SetEndVisibleValue(255.0);
        fade->SetGradationStrategy(TwoRasters());
        return fade;
    }
};

template <> struct CopySubject<eRenderGrayTerrianGradationObject>
{
    static constexpr bool kSamePixels = true;
    static eRenderGrayTerrianGradationObject* Make(Host::eScene&)
    {
        auto* fade = TileSubject<eRenderGrayTerrianGradationObject>("GrayTerrainTile");
        fade->SetGradationStrategy(TwoRasters());
        return fade;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(TextureBlend, CopyIdiom,
                               ::testing::Types<eRenderTextureBlendObject>);
INSTANTIATE_TYPED_TEST_SUITE_P(TileObject, CopyIdiom, ::testing::Types<eRenderTileObject>);
INSTANTIATE_TYPED_TEST_SUITE_P(GrayColor, CopyIdiom, ::testing::Types<eRenderGrayColorObject>);
INSTANTIATE_TYPED_TEST_SUITE_P(GrayTerrain, CopyIdiom, ::testing::Types<eRenderGrayTerrainObject>);
INSTANTIATE_TYPED_TEST_SUITE_P(GrayColorGradation, CopyIdiom,
                               ::testing::Types<eRenderGrayColorGradationObject>);
INSTANTIATE_TYPED_TEST_SUITE_P(GrayTerrainGradation, CopyIdiom,
                               ::testing::Types<eRenderGrayTerrianGradationObject>);
