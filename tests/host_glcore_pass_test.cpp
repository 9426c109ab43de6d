// Materials and passes, and the render state that BeginPass / EndPass leave in OpenGL.
#include "eGLContext.h"
#include "eMaterial.h"
#include "eProgram.h"
#include "eProgramLibrary.h"
#include "eRecorder.h"
#include "eRenderQueueVisitor.h"

#include <epoxy/gl.h>
#include <gtest/gtest.h>

using namespace KYR;
using namespace KYR::Host;

namespace
{

GLint Int(GLenum e)
{
    GLint v = -12345;
    glGetIntegerv(e, &v);
    return v;
}

GLfloat Float(GLenum e)
{
    GLfloat v = -12345.0f;
    glGetFloatv(e, &v);
    return v;
}

TEST(GLCoreMaterial, OwnsTechniquesAndPassesByIndex)
{
    eMaterial material;
    EXPECT_EQ(material.GetBestTechnique(), nullptr);
    eTechnique* first = material.CreateTechnique();
    eTechnique* second = material.CreateTechnique();
    EXPECT_NE(first, second);
    EXPECT_EQ(material.GetTechnique(0), first);
    EXPECT_EQ(material.GetTechnique(1), second);
    EXPECT_EQ(material.GetTechnique(2), nullptr);
    EXPECT_EQ(material.GetBestTechnique(), first);

    ePass* pass = first->CreatePass();
    EXPECT_EQ(first->GetPass(0), pass);
    EXPECT_EQ(first->GetPass(1), nullptr);
    EXPECT_EQ(second->GetPass(0), nullptr);
}

TEST(GLCoreMaterial, PassDefaultsAndTransparency)
{
    ePass pass;
    EXPECT_FALSE(pass.IsTransparent());
    EXPECT_EQ(pass.GetSourceBlendFactor(), eBF_ONE);
    EXPECT_EQ(pass.GetDestBlendFactor(), eBF_ZERO);
    EXPECT_TRUE(pass.GetDepthCheckEnabled());
    EXPECT_TRUE(pass.GetDepthWriteEnabled());
    EXPECT_EQ(pass.GetDepthFunc(), eCF_LESS_EQUAL);
    EXPECT_EQ(pass.GetLineWidth(), 1.0f);
    EXPECT_EQ(pass.GetPointSize(), 1.0f);
    EXPECT_FALSE(pass.GetPointSpriteEnabled());
    EXPECT_FALSE(pass.IsLightingEnabled());
    EXPECT_EQ(pass.GetProjectionMode(), ePM_PERSPECTIVE);
    EXPECT_EQ(pass.GetDiffuse(), eVector4T<float>(1, 1, 1, 1));
    EXPECT_EQ(pass.GetSpecular(), eVector4T<float>(0, 0, 0, 1));
    EXPECT_EQ(pass.GetShininess(), 0.0f);

    pass.SetBlendingFunc(eBF_ONE, eBF_ONE); // additive: blended
    EXPECT_TRUE(pass.IsTransparent());
    pass.SetBlendingFunc(eBF_ZERO, eBF_ZERO);
    EXPECT_TRUE(pass.IsTransparent());
    pass.SetBlendingFunc(eBF_ONE, eBF_ZERO);
    EXPECT_FALSE(pass.IsTransparent());
}

class GLCorePass : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(eGLContext::Get().Ensure(16, 16)) << eGLContext::Get().GetError();
        eGLContext::ApplyHostDefaults();
    }
    void TearDown() override { eRecorder::Get().Stop(); }

    void ExpectHostDefaults()
    {
        EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
        EXPECT_EQ(Int(GL_DEPTH_FUNC), GL_LEQUAL);
        EXPECT_EQ(Int(GL_DEPTH_WRITEMASK), GL_TRUE);
        EXPECT_FALSE(glIsEnabled(GL_BLEND));
        EXPECT_EQ(Int(GL_BLEND_SRC_RGB), GL_ONE);
        EXPECT_EQ(Int(GL_BLEND_DST_RGB), GL_ZERO);
        EXPECT_FALSE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
        EXPECT_FALSE(glIsEnabled(GL_POLYGON_OFFSET_LINE));
        EXPECT_EQ(Float(GL_POLYGON_OFFSET_FACTOR), 0.0f);
        EXPECT_EQ(Float(GL_POLYGON_OFFSET_UNITS), 0.0f);
        EXPECT_EQ(Float(GL_LINE_WIDTH), 1.0f);
        EXPECT_EQ(Float(GL_POINT_SIZE), 1.0f);
        EXPECT_FALSE(glIsEnabled(GL_POINT_SPRITE));
        EXPECT_FALSE(glIsEnabled(GL_PROGRAM_POINT_SIZE));
        EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
        EXPECT_EQ(Int(GL_CULL_FACE_MODE), GL_BACK);
        EXPECT_EQ(Int(GL_FRONT_FACE), GL_CCW);
        EXPECT_EQ(Int(GL_CURRENT_PROGRAM), 0);
    }

    eRenderQueueVisitor m_visitor;
};

TEST_F(GLCorePass, BeginPassAppliesEveryStateAndEndPassRestoresDefaults)
{
    eRenderProgram* color = eProgramLibrary::Get().Find("Color");
    ASSERT_NE(color, nullptr);

    ePass pass;
    pass.SetProgram("Color");
    pass.SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass.SetDepthCheckEnabled(0);
    pass.SetDepthWriteEnabled(0);
    pass.SetDepthFunc(eCF_GREATER);
    pass.SetDepthBiasConstant(2.0f);
    pass.SetDepthBiasSlopeScale(1.5f);
    pass.SetLineWidth(3.0f);
    pass.SetPointSize(5.0f);
    pass.SetPointSpriteEnabled(1);

    eRecorder::Get().Start();
    m_visitor.BeginPass(&pass);
    EXPECT_EQ((GLuint)Int(GL_CURRENT_PROGRAM), color->GetProgram()->GetProgramID());
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    EXPECT_EQ(Int(GL_BLEND_SRC_RGB), GL_SRC_ALPHA);
    EXPECT_EQ(Int(GL_BLEND_DST_RGB), GL_ONE_MINUS_SRC_ALPHA);
    EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(Int(GL_DEPTH_WRITEMASK), GL_FALSE);
    EXPECT_EQ(Int(GL_DEPTH_FUNC), GL_GREATER);
    EXPECT_TRUE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
    EXPECT_TRUE(glIsEnabled(GL_POLYGON_OFFSET_LINE));
    EXPECT_EQ(Float(GL_POLYGON_OFFSET_FACTOR), 1.5f);
    EXPECT_EQ(Float(GL_POLYGON_OFFSET_UNITS), 2.0f);
    EXPECT_EQ(Float(GL_LINE_WIDTH), 3.0f);
    EXPECT_EQ(Float(GL_POINT_SIZE), 5.0f);
    EXPECT_TRUE(glIsEnabled(GL_POINT_SPRITE));
    EXPECT_TRUE(glIsEnabled(GL_PROGRAM_POINT_SIZE));
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);

    // What an effect may change beyond its pass: the face it culls.
    glEnable(GL_CULL_FACE);
    glCullFace(GL_FRONT);
    glFrontFace(GL_CW);
    m_visitor.EndPass();
    ExpectHostDefaults();

    auto const& records = eRecorder::Get().Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].kind, eRecord::BeginPass);
    EXPECT_EQ(records[0].op, "Color");
    EXPECT_EQ(records[1].kind, eRecord::EndPass);
}

TEST_F(GLCorePass, OpaquePassWithoutProgramKeepsDefaults)
{
    eRenderProgram* color = eProgramLibrary::Get().Find("Color");
    ASSERT_NE(color, nullptr);
    glUseProgram(color->GetProgram()->GetProgramID());
    ePass pass; // no program, (ONE, ZERO), no bias
    m_visitor.BeginPass(&pass);
    ExpectHostDefaults();
    m_visitor.BeginPass(nullptr); // ignored
    m_visitor.EndPass();
    ExpectHostDefaults();
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
}

} // namespace
