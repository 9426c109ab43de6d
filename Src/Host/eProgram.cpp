#include "eProgram.h"

#include "eGLContext.h"
#include "eProgramLibrary.h"
#include "eRecorder.h"

#include <epoxy/gl.h>

namespace KYR
{

namespace
{

// glProgramUniform* needs OpenGL 4.1 or separate shader objects; without them the program is
// made current for the call and the previous one restored.
bool HasProgramUniform()
{
    static int s_nHas = -1;
    if (s_nHas < 0)
        s_nHas =
            (epoxy_gl_version() >= 41 || epoxy_has_gl_extension("GL_ARB_separate_shader_objects"))
                ? 1
                : 0;
    return s_nHas == 1;
}

template <typename Direct, typename Current>
void Send(unsigned int program, Direct direct, Current current)
{
    if (HasProgramUniform())
    {
        direct();
        return;
    }
    GLint nPrevious = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &nPrevious);
    if ((GLuint)nPrevious != program)
        glUseProgram(program);
    current();
    if ((GLuint)nPrevious != program)
        glUseProgram((GLuint)nPrevious);
}

template <typename T>
void Record(unsigned int program, char const* op, int location, T const* values, int count)
{
    Host::eRecorder& rec = Host::eRecorder::Get();
    if (!rec.IsOn())
        return;
    Host::eRecord r;
    r.kind = Host::eRecord::Uniform;
    r.op = op;
    r.location = location;
    r.uniform = Host::UniformNameAt(program, location);
    if (values)
        for (int i = 0; i < count; ++i)
            r.values.push_back((double)values[i]);
    rec.Add(r);
}

} // namespace

eProgram::eProgram(unsigned int programId) : m_nProgram(programId) {}

eProgram::~eProgram()
{
    if (m_nProgram && Host::eGLContext::Get().IsReady())
        glDeleteProgram(m_nProgram);
}

void eProgram::Use()
{
    glUseProgram(m_nProgram);
}

int eProgram::GetUniformLocation(eString const& name)
{
    if (!m_nProgram)
        return -1;
    return glGetUniformLocation(m_nProgram, name.Cstr());
}

void eProgram::UniformVector4(int location, float const* v)
{
    Record(m_nProgram, "UniformVector4", location, v, 4);
    if (location < 0 || !m_nProgram || !v)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform4fv(m_nProgram, location, 1, v); },
        [&] { glUniform4fv(location, 1, v); });
}

void eProgram::UniformVector4Scaled(int location, float scale, float const* v)
{
    float s[4] = {0, 0, 0, 0};
    if (v)
        for (int i = 0; i < 4; ++i)
            s[i] = v[i] * scale;
    Record(m_nProgram, "UniformVector4Scaled", location, v ? s : nullptr, 4);
    if (location < 0 || !m_nProgram || !v)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform4fv(m_nProgram, location, 1, s); },
        [&] { glUniform4fv(location, 1, s); });
}

void eProgram::Uniform4f(int location, float x, float y, float z, float w)
{
    float v[4] = {x, y, z, w};
    Record(m_nProgram, "Uniform4f", location, v, 4);
    if (location < 0 || !m_nProgram)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform4f(m_nProgram, location, x, y, z, w); },
        [&] { glUniform4f(location, x, y, z, w); });
}

void eProgram::Uniform3f(int location, float x, float y, float z)
{
    float v[3] = {x, y, z};
    Record(m_nProgram, "Uniform3f", location, v, 3);
    if (location < 0 || !m_nProgram)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform3f(m_nProgram, location, x, y, z); },
        [&] { glUniform3f(location, x, y, z); });
}

void eProgram::Uniform2f(int location, float x, float y)
{
    float v[2] = {x, y};
    Record(m_nProgram, "Uniform2f", location, v, 2);
    if (location < 0 || !m_nProgram)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform2f(m_nProgram, location, x, y); },
        [&] { glUniform2f(location, x, y); });
}

void eProgram::Uniform1f(int location, float x)
{
    Record(m_nProgram, "Uniform1f", location, &x, 1);
    if (location < 0 || !m_nProgram)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform1f(m_nProgram, location, x); },
        [&] { glUniform1f(location, x); });
}

void eProgram::Uniform2i(int location, int x, int y)
{
    int v[2] = {x, y};
    Record(m_nProgram, "Uniform2i", location, v, 2);
    if (location < 0 || !m_nProgram)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform2i(m_nProgram, location, x, y); },
        [&] { glUniform2i(location, x, y); });
}

void eProgram::Uniform1i(int location, int x)
{
    Record(m_nProgram, "Uniform1i", location, &x, 1);
    if (location < 0 || !m_nProgram)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform1i(m_nProgram, location, x); },
        [&] { glUniform1i(location, x); });
}

void eProgram::UniformArray2(int location, int count, float const* v)
{
    Record(m_nProgram, "UniformArray2", location, v, count > 0 ? 2 * count : 0);
    if (location < 0 || !m_nProgram || !v || count <= 0)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform2fv(m_nProgram, location, count, v); },
        [&] { glUniform2fv(location, count, v); });
}

void eProgram::UniformArray3(int location, int count, float const* v)
{
    Record(m_nProgram, "UniformArray3", location, v, count > 0 ? 3 * count : 0);
    if (location < 0 || !m_nProgram || !v || count <= 0)
        return;
    Send(
        m_nProgram, [&] { glProgramUniform3fv(m_nProgram, location, count, v); },
        [&] { glUniform3fv(location, count, v); });
}

void eProgram::UniformMatrix3(int location, int count, unsigned char transpose, float const* m)
{
    Record(m_nProgram, "UniformMatrix3", location, m, count > 0 ? 9 * count : 0);
    if (location < 0 || !m_nProgram || !m || count <= 0)
        return;
    GLboolean t = transpose ? GL_TRUE : GL_FALSE;
    Send(
        m_nProgram, [&] { glProgramUniformMatrix3fv(m_nProgram, location, count, t, m); },
        [&] { glUniformMatrix3fv(location, count, t, m); });
}

void eProgram::UniformMatrix4(int location, int count, unsigned char transpose, float const* m)
{
    Record(m_nProgram, "UniformMatrix4", location, m, count > 0 ? 16 * count : 0);
    if (location < 0 || !m_nProgram || !m || count <= 0)
        return;
    GLboolean t = transpose ? GL_TRUE : GL_FALSE;
    Send(
        m_nProgram, [&] { glProgramUniformMatrix4fv(m_nProgram, location, count, t, m); },
        [&] { glUniformMatrix4fv(location, count, t, m); });
}

eRenderProgram::eRenderProgram(eString const& name, eProgram* program,
                               eShaderUniform const& uniforms)
    : m_strName(name), m_pProgram(program), m_Uniform(uniforms)
{
}

eRenderProgram::~eRenderProgram()
{
    delete m_pProgram;
}

} // namespace KYR
