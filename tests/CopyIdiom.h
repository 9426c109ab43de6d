// The copy test every exported effect class joins. An effect is made and drawn, then
// copy-constructed, assigned, assigned from its own copy and self-assigned; the holders are
// then destroyed in every order, and after each destruction a survivor is drawn again. Run
// under AddressSanitizer and LeakSanitizer this shows that copies share what they hold and the
// last holder frees it once.
//
// A class joins by specialising CopySubject in its own test file and instantiating the
// suite there:
//
//   template <> struct CopySubject<eRenderCone>
//   {
//       static constexpr bool kSamePixels = true; // false for effects that move each frame
//       static constexpr bool kDraws = false;     // optional: only for a class that never draws
//       static void Prepare(KYR::Host::eScene&) {} // camera, scene mode (optional)
//       static eRenderCone* Make(KYR::Host::eScene&) { ...construct and fill...; }
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Cone, CopyIdiom, ::testing::Types<eRenderCone>);
//
// Make returns a new object with its data set; the test adds it to the scene itself. What it
// makes must draw something in the 96 x 96 scene (the first frame is checked against the
// empty one), so that the survivors' pixels mean something.
#pragma once
#include "eScene.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

template <typename T> struct CopySubject;

namespace CopyIdiomDetail
{

// Objects that declare Prepare get it called; the rest keep the scene as it is.
template <typename S> auto Prepare(KYR::Host::eScene& scene, int) -> decltype(S::Prepare(scene))
{
    return S::Prepare(scene);
}
template <typename S> void Prepare(KYR::Host::eScene&, long) {}

// Objects draw unless their subject says kDraws = false.
template <typename S> constexpr auto Draws(int) -> decltype(S::kDraws)
{
    return S::kDraws;
}
template <typename S> constexpr bool Draws(long)
{
    return true;
}

inline bool SamePixels(std::vector<unsigned char> const& a, std::vector<unsigned char> const& b)
{
    if (a.size() != b.size())
        return false;
    // llvmpipe is deterministic; allow one step for rounding in blended edges.
    for (size_t i = 0; i < a.size(); ++i)
        if (std::abs(int(a[i]) - int(b[i])) > 1)
            return false;
    return true;
}

inline bool Drawn(std::vector<unsigned char> const& px, std::vector<unsigned char> const& empty)
{
    return !SamePixels(px, empty);
}

} // namespace CopyIdiomDetail

template <typename T> class CopyIdiom : public ::testing::Test
{
protected:
    using Subject = CopySubject<T>;

    void SetUp() override
    {
        m_scene.reset(new KYR::Host::eScene(96, 96));
        ASSERT_TRUE(m_scene->IsReady()) << "no OpenGL context";
        m_scene->Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
        CopyIdiomDetail::Prepare<Subject>(*m_scene, 0);
        m_scene->RenderFrame();
        m_empty = m_scene->ReadPixels();
    }
    void TearDown() override { m_scene.reset(); }

    // Draws only `effect` and returns the pixels.
    std::vector<unsigned char> DrawAlone(T* effect)
    {
        m_scene->Add(effect);
        m_scene->RenderFrame();
        m_scene->Remove(effect);
        return m_scene->ReadPixels();
    }

    void CheckSurvivor(T* survivor, std::vector<unsigned char> const& reference, char const* what)
    {
        std::vector<unsigned char> px = DrawAlone(survivor);
        if (Subject::kSamePixels)
        {
            EXPECT_TRUE(CopyIdiomDetail::SamePixels(px, reference)) << what;
        }
        else if (CopyIdiomDetail::Drawn(reference, m_empty))
        {
            EXPECT_TRUE(CopyIdiomDetail::Drawn(px, m_empty)) << what << ": draws nothing";
        }
    }

    std::unique_ptr<KYR::Host::eScene> m_scene;
    std::vector<unsigned char> m_empty;
};

TYPED_TEST_SUITE_P(CopyIdiom);

TYPED_TEST_P(CopyIdiom, CopiesShareAndTheLastHolderFrees)
{
    using Subject = CopySubject<TypeParam>;
    // Three holders: the original, a copy-constructed one, and one assigned from the original
    // after it had data of its own, then self-assigned and assigned from its own copy.
    int const orders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    for (auto const& order : orders)
    {
        SCOPED_TRACE(testing::Message()
                     << "destroyed in order " << order[0] << order[1] << order[2]);
        std::unique_ptr<TypeParam> holders[3];
        holders[0].reset(Subject::Make(*this->m_scene));
        ASSERT_TRUE(holders[0]);
        std::vector<unsigned char> reference = this->DrawAlone(holders[0].get());
        if (CopyIdiomDetail::Draws<Subject>(0))
        {
            ASSERT_TRUE(CopyIdiomDetail::Drawn(reference, this->m_empty))
                << "what Make() returns draws nothing in the scene";
        }

        holders[1].reset(new TypeParam(*holders[0]));
        holders[2].reset(Subject::Make(*this->m_scene));
        this->DrawAlone(holders[2].get()); // it owns GL objects of its own before the assignment
        *holders[2] = *holders[0];
        TypeParam& self = *holders[2];
        self = *holders[2];
        {
            TypeParam own(*holders[2]);
            *holders[2] = own;
        }

        for (int k = 0; k < 3; ++k)
        {
            holders[order[k]].reset();
            for (int j = k + 1; j < 3; ++j)
                this->CheckSurvivor(holders[order[j]].get(), reference, "survivor");
        }
    }
}

REGISTER_TYPED_TEST_SUITE_P(CopyIdiom, CopiesShareAndTheLastHolderFrees);
