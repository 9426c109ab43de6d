// Program library and uniform setters, on shader files written to a scratch folder.
#include "GLut.h"
#include "eGLContext.h"
#include "eProgram.h"
#include "eProgramLibrary.h"
#include "eRecorder.h"

#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

using namespace KYR;
using namespace KYR::Host;

namespace
{

size_t CountOf(std::string const& text, std::string const& what)
{
    size_t n = 0;
    for (size_t p = text.find(what); p != std::string::npos; p = text.find(what, p + 1))
        ++n;
    return n;
}

class GLCoreProgram : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(eGLContext::Get().Ensure(16, 16)) << eGLContext::Get().GetError();
        std::string base = ::testing::TempDir() + "glcore_shadersXXXXXX";
        ASSERT_NE(mkdtemp(&base[0]), nullptr);
        m_dir = base + "/";
        m_oldPath = eProgramLibrary::Get().GetShaderPath();
        eProgramLibrary::Get().SetShaderPath(m_dir);
        eProgramLibrary::Get().Clear();

        Write("Common.glsl", "vec4 Offset(vec4 p, vec2 o) { return p + vec4(o, 0.0, 0.0); }\n");
        Write("Roles.vert", "#version 330 compatibility\n"
                            "// roles: u_alpha - u_offset u_weights\n"
                            "#include \"Common.glsl\"\n"
                            "in vec4 a_position;\nin vec2 a_texcoord0;\n"
                            "uniform mat4 u_worldMatrix;\nuniform vec2 u_offset;\n"
                            "uniform float u_weights[3];\nout vec2 v_uv;\n"
                            "void main() { v_uv = a_texcoord0 * (u_weights[0] + u_weights[2]);\n"
                            "  gl_Position = Offset(u_worldMatrix * a_position, u_offset); }\n");
        Write("Roles.frag", "#version 330 compatibility\n"
                            "// roles: u_alpha u_offset\n" // repeated: counts once
                            "in vec2 v_uv;\nuniform float u_alpha;\nuniform vec4 u_color;\n"
                            "out vec4 o;\n"
                            "void main() { o = vec4(u_color.rgb, u_alpha) + v_uv.xyxy; }\n");
        Write("Broken.vert", "#version 330 compatibility\nvoid main() { gl_Position = oops; }\n");
        Write("Broken.frag", "#version 330 compatibility\nvoid main() {}\n");
        Write("NoFrag.vert", "#version 330 compatibility\nvoid main() {}\n");
        Write("BadInclude.vert",
              "#version 330 compatibility\n#include \"Missing.glsl\"\nvoid main() {}\n");
        Write("BadInclude.frag", "#version 330 compatibility\nvoid main() {}\n");
    }

    void TearDown() override
    {
        eRecorder::Get().Stop();
        eProgramLibrary::Get().Clear();
        eProgramLibrary::Get().SetShaderPath(m_oldPath);
        for (char const* f : {"Common.glsl", "Roles.vert", "Roles.frag", "Broken.vert",
                              "Broken.frag", "NoFrag.vert", "BadInclude.vert", "BadInclude.frag"})
            std::remove((m_dir + f).c_str());
        std::remove(m_dir.c_str());
    }

    void Write(std::string const& name, std::string const& text)
    {
        std::ofstream(m_dir + name) << text;
    }

    std::string m_dir;
    std::string m_oldPath;
};

TEST_F(GLCoreProgram, UnknownNameGivesNullAndOneReport)
{
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(eProgramLibrary::Get().Find("NoSuchProgram"), nullptr);
    EXPECT_EQ(eProgramLibrary::Get().Find("NoSuchProgram"), nullptr);
    EXPECT_EQ(eProgramLibrary::Get().Find("../Roles"), nullptr); // not a plain name
    std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(CountOf(err, "host: unknown program \"NoSuchProgram\""), 1u) << err;
    EXPECT_EQ(CountOf(err, "\"../Roles\""), 1u) << err;
}

TEST_F(GLCoreProgram, BrokenProgramsGiveNullWithTheirNameInTheReport)
{
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(eProgramLibrary::Get().Find("Broken"), nullptr);
    EXPECT_EQ(eProgramLibrary::Get().Find("Broken"), nullptr); // remembered, not re-reported
    EXPECT_EQ(eProgramLibrary::Get().Find("NoFrag"), nullptr);
    EXPECT_EQ(eProgramLibrary::Get().Find("BadInclude"), nullptr);
    std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(CountOf(err, "program \"Broken\""), 1u) << err;
    EXPECT_NE(err.find("oops"), std::string::npos) << err; // the compiler's log is passed on
    EXPECT_NE(err.find("program \"NoFrag\""), std::string::npos) << err;
    EXPECT_NE(err.find("Missing.glsl"), std::string::npos) << err;
}

TEST_F(GLCoreProgram, LocationTablesFollowNamesAndRoles)
{
    eRenderProgram* rp = eProgramLibrary::Get().Find("Roles");
    ASSERT_NE(rp, nullptr);
    EXPECT_EQ(rp->GetName(), "Roles");
    EXPECT_EQ(eProgramLibrary::Get().Find("Roles"), rp); // cached
    GLuint id = rp->GetProgram()->GetProgramID();
    eShaderUniform* u = rp->GetUniform();

    EXPECT_EQ(u->m_nWorldMatrix, glGetUniformLocation(id, "u_worldMatrix"));
    EXPECT_GE(u->m_nWorldMatrix, 0);
    EXPECT_EQ(u->m_nColor, glGetUniformLocation(id, "u_color"));
    EXPECT_GE(u->m_nColor, 0);
    EXPECT_EQ(u->m_nViewMatrix, -1);
    EXPECT_EQ(u->m_nTexture1, -1);

    EXPECT_EQ(u->m_nCustom[0], glGetUniformLocation(id, "u_alpha"));
    EXPECT_GE(u->m_nCustom[0], 0);
    EXPECT_EQ(u->m_nCustom[1], -1); // "-" keeps the slot free
    EXPECT_EQ(u->m_nCustom[2], glGetUniformLocation(id, "u_offset"));
    EXPECT_EQ(u->m_nCustom[3], glGetUniformLocation(id, "u_weights"));
    EXPECT_GE(u->m_nCustom[3], 0);
    EXPECT_EQ(u->m_nCustom[4], -1);

    EXPECT_EQ(glGetAttribLocation(id, "a_position"), 0);
    EXPECT_EQ(glGetAttribLocation(id, "a_texcoord0"), 7);
    EXPECT_EQ(rp->GetAttribute()->m_nTexCoord0, 7);
}

TEST_F(GLCoreProgram, SettersReachTheProgramEvenWhenAnotherIsCurrent)
{
    eRenderProgram* rp = eProgramLibrary::Get().Find("Roles");
    ASSERT_NE(rp, nullptr);
    GLuint id = rp->GetProgram()->GetProgramID();
    eShaderUniform* u = rp->GetUniform();
    eProgram* p = rp->GetProgram();
    glUseProgram(0);

    eRecorder::Get().Start();
    p->Uniform1f(u->m_nCustom[0], 0.25f);
    p->Uniform2f(u->m_nCustom[2], 3.0f, -4.0f);
    float const weights[3] = {0.5f, 1.5f, 2.5f};
    p->UniformArray2(-1, 1, weights); // location -1: silently nothing
    GLint const w = u->m_nCustom[3];
    p->Uniform1f(w + 2, weights[2]);
    float const color[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    p->UniformVector4Scaled(u->m_nColor, 2.0f, color);
    eRecorder::Get().Stop();
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
    EXPECT_EQ(glIsProgram(id), GL_TRUE);

    GLfloat v[4] = {0, 0, 0, 0};
    glGetUniformfv(id, glGetUniformLocation(id, "u_alpha"), v);
    EXPECT_FLOAT_EQ(v[0], 0.25f);
    glGetUniformfv(id, glGetUniformLocation(id, "u_offset"), v);
    EXPECT_FLOAT_EQ(v[0], 3.0f);
    EXPECT_FLOAT_EQ(v[1], -4.0f);
    glGetUniformfv(id, glGetUniformLocation(id, "u_weights[2]"), v);
    EXPECT_FLOAT_EQ(v[0], 2.5f);
    glGetUniformfv(id, u->m_nColor, v);
    EXPECT_FLOAT_EQ(v[2], 0.6f);
    EXPECT_FLOAT_EQ(v[3], 0.8f);

    std::vector<eRecord> recs = eRecorder::Get().Of(eRecord::Uniform);
    ASSERT_EQ(recs.size(), 5u);
    EXPECT_EQ(recs[0].op, "Uniform1f");
    EXPECT_EQ(recs[0].uniform, "u_alpha");
    EXPECT_EQ(recs[0].values, std::vector<double>{0.25});
    EXPECT_EQ(recs[1].uniform, "u_offset");
    EXPECT_EQ(recs[2].location, -1);
    EXPECT_EQ(recs[2].uniform, "");
    EXPECT_EQ(recs[3].uniform, "u_weights[2]");
    EXPECT_EQ(recs[4].op, "UniformVector4Scaled");
    EXPECT_EQ(recs[4].uniform, "u_color");
    ASSERT_EQ(recs[4].values.size(), 4u);
    EXPECT_FLOAT_EQ((float)recs[4].values[1], 0.4f);
}

TEST_F(GLCoreProgram, GLutUniformsWriteAndRecordTheCurrentProgram)
{
    eRenderProgram* rp = eProgramLibrary::Get().Find("Roles");
    ASSERT_NE(rp, nullptr);
    GLuint id = rp->GetProgram()->GetProgramID();
    GLut::UseProgram(id);
    eRecorder::Get().Start();
    GLut::Uniform4f(rp->GetUniform()->m_nColor, 1.0f, 0.5f, 0.25f, 0.125f);
    eRecorder::Get().Stop();
    GLut::UseProgram(0);

    GLfloat v[4] = {0, 0, 0, 0};
    glGetUniformfv(id, rp->GetUniform()->m_nColor, v);
    EXPECT_FLOAT_EQ(v[3], 0.125f);
    std::vector<eRecord> recs = eRecorder::Get().Of(eRecord::Uniform);
    ASSERT_EQ(recs.size(), 1u);
    EXPECT_EQ(recs[0].op, "Uniform4f");
    EXPECT_EQ(recs[0].uniform, "u_color");
}

TEST(GLCoreHostPrograms, ColorProgramDeclaresItsVertexColourRole)
{
    ASSERT_TRUE(eGLContext::Get().Ensure(16, 16));
    eRenderProgram* rp = eProgramLibrary::Get().Find("Color");
    ASSERT_NE(rp, nullptr) << "shader path: " << eProgramLibrary::Get().GetShaderPath();
    GLuint id = rp->GetProgram()->GetProgramID();
    EXPECT_GE(rp->GetUniform()->m_nCustom[0], 0);
    EXPECT_EQ(rp->GetUniform()->m_nCustom[0], glGetUniformLocation(id, "u_useVertexColor"));
    EXPECT_GE(rp->GetUniform()->m_nProjectionMatrix, 0);
    EXPECT_GE(rp->GetUniform()->m_nLightingEnabled, 0);
}

} // namespace
