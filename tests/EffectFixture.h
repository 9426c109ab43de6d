// A small scene for effect tests, with helpers to read what the host recorded.
#pragma once
#include "eAssertLog.h"
#include "eRecorder.h"
#include "eScene.h"
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

class EffectTest : public ::testing::Test
{
protected:
    using eRecord = KYR::Host::eRecord;

    void SetUp() override
    {
        m_scene.reset(new KYR::Host::eScene(96, 96));
        ASSERT_TRUE(m_scene->IsReady()) << "no OpenGL context";
        m_scene->Camera().LookAt(0.0, 0.0, 2.0e7, 0.0, 0.0);
    }
    void TearDown() override
    {
        KYR::Host::eRecorder::Get().Stop();
        m_scene.reset();
    }

    // Draws one frame while recording and returns the records.
    std::vector<eRecord> RecordFrame()
    {
        KYR::Host::eRecorder::Get().Start();
        m_scene->RenderFrame();
        KYR::Host::eRecorder::Get().Stop();
        return KYR::Host::eRecorder::Get().Records();
    }

    static std::vector<eRecord> Of(std::vector<eRecord> const& all, eRecord::Kind kind)
    {
        std::vector<eRecord> out;
        for (auto const& r : all)
            if (r.kind == kind)
                out.push_back(r);
        return out;
    }

    // Pixel (x, y) of the last frame, y from the top.
    std::vector<unsigned char> Pixel(int x, int y)
    {
        std::vector<unsigned char> px = m_scene->ReadPixels();
        size_t i = ((size_t)y * m_scene->Width() + x) * 4;
        return {px[i], px[i + 1], px[i + 2], px[i + 3]};
    }

    std::unique_ptr<KYR::Host::eScene> m_scene;
};
