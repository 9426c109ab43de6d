// Vertex and index stores, hardware buffers and the render system's draws.
#include "eGLContext.h"
#include "eHardwareBuffer.h"
#include "eMesh.h"
#include "eRecorder.h"
#include "eRenderSystem.h"

#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace KYR;
using namespace KYR::Host;

namespace
{

// Position float 2, colour 4 normalised bytes, an integer selector: 16 bytes.
struct Vertex
{
    float x, y;
    unsigned char rgba[4];
    int select;
};

void DescribeVertex(eVertexData& vd)
{
    vd.AddElement(eVET_FLOAT, eVEC_2, eAI_POSITION, 0);
    vd.AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
    vd.AddElement(eVET_INT, eVEC_1, eAI_ATTRIB1, 0);
}

TEST(HostBuffersLayout, ElementsTakeOffsetsFromTheStrideSoFar)
{
    eVertexData vd;
    DescribeVertex(vd);
    std::vector<eVertexElement>& e = vd.GetVertexElements();
    ASSERT_EQ(e.size(), 3u);
    EXPECT_EQ(e[0].m_nOffset, 0);
    EXPECT_EQ(e[1].m_nOffset, 8);
    EXPECT_EQ(e[2].m_nOffset, 12);
    EXPECT_EQ(e[1].m_bNormalized, 1);
    EXPECT_EQ(e[2].m_eIndex, eAI_ATTRIB1);
    EXPECT_EQ(vd.GetVertexStride(), (int)sizeof(Vertex));

    vd.SetVertexSize(3);
    EXPECT_EQ(vd.GetVertexBuffer().size(), 3 * sizeof(Vertex));
    EXPECT_EQ(vd.GetVertex(2), vd.GetVertexBuffer().data() + 2 * sizeof(Vertex));
    EXPECT_EQ(vd.GetVertex(3), nullptr);
    EXPECT_EQ(vd.GetVertex(-1), nullptr);

    Vertex v[2] = {{1, 2, {1, 2, 3, 4}, 5}, {6, 7, {8, 9, 10, 11}, 12}};
    vd.AddVertex(reinterpret_cast<unsigned char const*>(v), 2);
    EXPECT_EQ(vd.GetVertexSize(), 5);
    EXPECT_EQ(std::memcmp(vd.GetVertex(3), v, sizeof v), 0);
}

TEST(HostBuffersLayout, MeshFloatAccessAndWideIndices)
{
    eMesh mesh;
    mesh.GetVertexData()->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    float const p[6] = {1, 2, 3, 4, 5, 6};
    mesh.AddVertex(p, 2);
    EXPECT_EQ(mesh.GetVertexSize(), 2);
    ASSERT_NE(mesh.GetVertex(1), nullptr);
    EXPECT_EQ(mesh.GetVertex(1)[2], 6.0f);
    EXPECT_EQ(mesh.GetIndexData()->GetIndexType(), (unsigned)GL_UNSIGNED_SHORT);

    // The count may come before the layout.
    eVertexData late;
    late.SetVertexSize(4);
    late.AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    EXPECT_EQ(late.GetVertexBuffer().size(), 4u * 16u);
    EXPECT_NE(late.GetVertex(3), nullptr);

    eMesh wide(true);
    EXPECT_EQ(wide.GetIndexData()->GetIndexType(), (unsigned)GL_UNSIGNED_INT);
    wide.GetIndexData()->AddIndex(70);
    EXPECT_EQ(wide.GetIndexData()->GetIndexSize(), 1);
}

class HostBuffersGL : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(eGLContext::Get().Ensure(16, 16)) << eGLContext::Get().GetError();
        eGLContext::Get().Bind();
        ApplyHostDefaults();
        glDisable(GL_DEPTH_TEST);
    }
    void TearDown() override
    {
        eRecorder::Get().Stop();
        glUseProgram(0);
        if (m_nProgram)
            glDeleteProgram(m_nProgram);
    }

    // A program that shows the vertex colour where the integer selector arrives as 7, and
    // magenta where it does not.
    void UseProgram()
    {
        char const* vs = "#version 330 core\n"
                         "layout(location = 0) in vec2 a_position;\n"
                         "layout(location = 2) in vec4 a_color;\n"
                         "layout(location = 1) in int a_select;\n"
                         "out vec4 v_color; flat out int v_select;\n"
                         "void main() { gl_Position = vec4(a_position, 0.0, 1.0);\n"
                         "  v_color = a_color; v_select = a_select; }\n";
        char const* fs =
            "#version 330 core\n"
            "in vec4 v_color; flat in int v_select; out vec4 o;\n"
            "void main() { o = v_select == 7 ? v_color : vec4(1.0, 0.0, 1.0, 1.0); }\n";
        m_nProgram = glCreateProgram();
        for (auto [type, src] :
             {std::pair{GL_VERTEX_SHADER, vs}, std::pair{GL_FRAGMENT_SHADER, fs}})
        {
            GLuint s = glCreateShader(type);
            glShaderSource(s, 1, &src, nullptr);
            glCompileShader(s);
            glAttachShader(m_nProgram, s);
            glDeleteShader(s);
        }
        glLinkProgram(m_nProgram);
        GLint ok = 0;
        glGetProgramiv(m_nProgram, GL_LINK_STATUS, &ok);
        ASSERT_TRUE(ok);
        glUseProgram(m_nProgram);
    }

    // A full-screen quad; indices 0-2 cover the lower right half, 3-5 the upper left.
    void BuildQuad(eMesh& mesh)
    {
        DescribeVertex(*mesh.GetVertexData());
        Vertex const v[4] = {{-1, -1, {0, 128, 255, 255}, 7},
                             {1, -1, {0, 128, 255, 255}, 7},
                             {1, 1, {0, 128, 255, 255}, 7},
                             {-1, 1, {0, 128, 255, 255}, 7}};
        mesh.GetVertexData()->AddVertex(reinterpret_cast<unsigned char const*>(v), 4);
        for (unsigned short i : {0, 1, 2, 0, 2, 3})
            mesh.GetIndexData()->AddIndex(i);
    }

    std::vector<unsigned char> Clear()
    {
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        return eGLContext::Get().ReadPixels();
    }
    static unsigned char const* At(std::vector<unsigned char> const& px, int x, int y)
    {
        return &px[((size_t)y * 16 + x) * 4];
    }

    GLuint m_nProgram = 0;
};

TEST_F(HostBuffersGL, VertexUploadReadsBackAndWritesRanges)
{
    eVertexData vd;
    DescribeVertex(vd);
    Vertex v[3] = {{1, 2, {1, 2, 3, 4}, -5}, {6, 7, {8, 9, 10, 11}, 12}, {0, 0, {0, 0, 0, 0}, 0}};
    vd.AddVertex(reinterpret_cast<unsigned char const*>(v), 3);
    ASSERT_TRUE(vd.Create());
    eHardwareVertexBuffer* hw = vd.GetHardwareBuffer();
    ASSERT_NE(hw, nullptr);
    EXPECT_NE(hw->GetBufferID(), 0u);
    EXPECT_EQ(hw->GetSizeInBytes(), (int)sizeof v);
    EXPECT_EQ(hw->GetVertexStride(), (int)sizeof(Vertex));

    Vertex back[3];
    ASSERT_TRUE(hw->ReadData(0, sizeof back, back));
    EXPECT_EQ(std::memcmp(back, v, sizeof v), 0);

    Vertex patch = {9, 9, {9, 9, 9, 9}, 9};
    EXPECT_TRUE(hw->WriteData(sizeof(Vertex), sizeof patch, &patch));
    EXPECT_FALSE(hw->WriteData(2 * sizeof(Vertex) + 1, sizeof patch, &patch)); // past the end
    EXPECT_FALSE(hw->ReadData(-1, 4, back));
    ASSERT_TRUE(hw->ReadData(0, sizeof back, back));
    EXPECT_EQ(std::memcmp(&back[0], &v[0], sizeof(Vertex)), 0);
    EXPECT_EQ(std::memcmp(&back[1], &patch, sizeof(Vertex)), 0);

    // The count survives dropping the processor copy; a second Create replaces the buffer.
    vd.GetVertexBuffer().clear();
    EXPECT_EQ(vd.GetVertexSize(), 3);
    ASSERT_TRUE(vd.Create()); // empty store still succeeds
    EXPECT_EQ(vd.GetHardwareBuffer()->GetSizeInBytes(), 0);
    EXPECT_TRUE(vd.Delete());
    EXPECT_EQ(vd.GetHardwareBuffer(), nullptr);
}

TEST_F(HostBuffersGL, IndexStoresUploadAtTheirWidth)
{
    eIndexExData wide;
    for (unsigned int i : {1u, 70000u, 3u})
        wide.AddIndexEx(i);
    ASSERT_TRUE(wide.Create());
    ASSERT_NE(wide.GetHardwareBuffer(), nullptr);
    EXPECT_EQ(wide.GetHardwareBuffer()->GetIndexSize(), 4);
    unsigned int back[3] = {};
    ASSERT_TRUE(wide.GetHardwareBuffer()->ReadData(0, sizeof back, back));
    EXPECT_EQ(back[1], 70000u);
    wide.GetIndexExBuffer().clear();
    EXPECT_EQ(wide.GetIndexSize(), 3);

    eIndexData narrow;
    narrow.AddIndex(65535);
    ASSERT_TRUE(narrow.Create());
    EXPECT_EQ(narrow.GetHardwareBuffer()->GetIndexSize(), 2);
    EXPECT_EQ(narrow.GetHardwareBuffer()->GetSizeInBytes(), 2);
}

TEST_F(HostBuffersGL, DrawIndexedColoursTheTriangleAndRecordsOnce)
{
    UseProgram();
    eMesh mesh;
    BuildQuad(mesh);
    mesh.GetIndexData()->GetIndexBuffer().resize(3); // the lower right triangle only
    ASSERT_TRUE(mesh.GetVertexData()->Create() && mesh.GetIndexData()->Create());
    Clear();
    eRenderSystem rs;
    eRecorder::Get().Start();
    rs.DrawIndexed(eOT_TRIANGLE_LIST, mesh.GetVertexData(), mesh.GetIndexData(), false);
    eRecorder::Get().Stop();

    std::vector<unsigned char> px = eGLContext::Get().ReadPixels();
    unsigned char const* in = At(px, 14, 14); // lower right (row 0 is the top)
    EXPECT_EQ(in[0], 0);
    EXPECT_NEAR(in[1], 128, 1); // normalised byte colour
    EXPECT_EQ(in[2], 255);
    EXPECT_EQ(At(px, 1, 1)[2], 0); // upper left untouched

    std::vector<eRecord> draws = eRecorder::Get().Of(eRecord::Draw);
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0].op, "DrawIndexed");
    EXPECT_EQ(draws[0].mode, 4);
    EXPECT_EQ(draws[0].count, 3);
}

TEST_F(HostBuffersGL, RangesAndUnindexedDraws)
{
    UseProgram();
    eMesh mesh;
    BuildQuad(mesh);
    ASSERT_TRUE(mesh.GetVertexData()->Create() && mesh.GetIndexData()->Create());
    // The CPU copies may go: draws rely on the buffers only.
    mesh.GetIndexData()->GetIndexBuffer().clear();
    mesh.GetVertexData()->GetVertexBuffer().clear();
    eRenderSystem rs;

    Clear();
    rs.DrawIndexRange(eOT_TRIANGLE_LIST, mesh.GetVertexData(), mesh.GetIndexData(), 3, 3, false);
    std::vector<unsigned char> px = eGLContext::Get().ReadPixels();
    EXPECT_EQ(At(px, 1, 1)[2], 255); // upper left drawn
    EXPECT_EQ(At(px, 14, 14)[2], 0); // lower right not

    Clear();
    rs.DrawVertices(eOT_TRIANGLE_FAN, mesh.GetVertexData(), 0, 40, false); // clipped to 4
    px = eGLContext::Get().ReadPixels();
    EXPECT_EQ(At(px, 1, 1)[2], 255);
    EXPECT_EQ(At(px, 14, 14)[2], 255);
}

TEST_F(HostBuffersGL, MissingBuffersDrawNothing)
{
    UseProgram();
    eMesh mesh;
    BuildQuad(mesh); // never created
    std::vector<unsigned char> before = Clear();
    eRenderSystem rs;
    rs.DrawIndexed(eOT_TRIANGLE_LIST, mesh.GetVertexData(), mesh.GetIndexData(), false);
    rs.DrawIndexed(eOT_TRIANGLE_LIST, nullptr, nullptr, false);
    rs.DrawVertices(eOT_TRIANGLE_FAN, nullptr, 0, 4, false);
    ASSERT_TRUE(mesh.GetVertexData()->Create());
    rs.DrawIndexRange(eOT_TRIANGLE_LIST, mesh.GetVertexData(), mesh.GetIndexData(), 3, 0, false);
    EXPECT_EQ(eGLContext::Get().ReadPixels(), before);
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
}

} // namespace
