#include "eProgramLibrary.h"

#include "eDataPaths.h"
#include "eGLContext.h"
#include "eProgram.h"

#include <epoxy/gl.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

namespace KYR
{
namespace Host
{

namespace
{

// Attribute input names, bound to the generic attribute numbers 0..15 before linking.
char const* const s_attributeNames[16] = {"a_position",  "a_attrib1",   "a_color",    "a_attrib3",
                                          "a_attrib4",   "a_attrib5",   "a_attrib6",  "a_texcoord0",
                                          "a_texcoord1", "a_texcoord2", "a_attrib10", "a_attrib11",
                                          "a_attrib12",  "a_attrib13",  "a_attrib14", "a_attrib15"};

bool ReadFile(std::string const& path, std::string& text)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    std::ostringstream ss;
    ss << in.rdbuf();
    text = ss.str();
    return true;
}

std::string JoinPath(std::string const& dir, std::string const& file)
{
    if (dir.empty())
        return file;
    char last = dir[dir.size() - 1];
    return (last == '/' || last == '\\') ? dir + file : dir + "/" + file;
}

// A program name is a plain file stem: no folders, no empty name.
bool IsPlainName(std::string const& name)
{
    if (name.empty() || name == "." || name == "..")
        return false;
    for (char c : name)
        if (c == '/' || c == '\\' || c == '\0')
            return false;
    return true;
}

// Appends the names of every "// roles: a b c" line of `source` to `roles`, skipping a
// name already listed (so a list repeated in two stages counts once). "-" keeps a slot free.
void ParseRoles(std::string const& source, std::vector<std::string>& roles)
{
    std::istringstream lines(source);
    std::string line;
    while (std::getline(lines, line))
    {
        size_t p = line.find_first_not_of(" \t");
        if (p == std::string::npos || line.compare(p, 2, "//") != 0)
            continue;
        p = line.find_first_not_of(" \t", p + 2);
        if (p == std::string::npos || line.compare(p, 6, "roles:") != 0)
            continue;
        std::istringstream words(line.substr(p + 6));
        std::string word;
        while (words >> word)
        {
            bool bListed = false;
            if (word != "-")
                for (auto const& r : roles)
                    bListed = bListed || r == word;
            if (!bListed)
                roles.push_back(word);
        }
    }
}

// Replaces each line `#include "file"` with that file from `dir`, recursively (at most 8
// deep). #line directives keep compile messages pointing at the right file and line: the
// stage's own text is source string 0, included files 1, 2, ... in order of inclusion. False
// with `error` set when an included file cannot be read.
bool ExpandIncludes(std::string const& text, std::string const& dir, int depth, int& fileNo,
                    std::string& out, std::string& error)
{
    std::istringstream lines(text);
    std::string line;
    int nLine = 0;
    int const self = fileNo;
    while (std::getline(lines, line))
    {
        ++nLine;
        size_t p = line.find_first_not_of(" \t");
        if (p == std::string::npos || line.compare(p, 8, "#include") != 0)
        {
            out += line;
            out += '\n';
            continue;
        }
        size_t open = line.find('"', p + 8);
        size_t close = open == std::string::npos ? open : line.find('"', open + 1);
        if (close == std::string::npos)
        {
            error = "malformed line " + std::to_string(nLine) + ": " + line;
            return false;
        }
        std::string file = line.substr(open + 1, close - open - 1);
        std::string included;
        if (depth >= 8 || !ReadFile(JoinPath(dir, file), included))
        {
            error = depth >= 8 ? "includes nested too deep at \"" + file + "\""
                               : "cannot read included file " + JoinPath(dir, file);
            return false;
        }
        int const child = ++fileNo;
        out += "#line 1 " + std::to_string(child) + "\n";
        if (!ExpandIncludes(included, dir, depth + 1, fileNo, out, error))
            return false;
        out += "#line " + std::to_string(nLine + 1) + " " + std::to_string(self) + "\n";
    }
    return true;
}

std::string ShaderLog(GLuint shader)
{
    GLint n = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &n);
    std::string log(n > 0 ? (size_t)n : 0, '\0');
    if (n > 0)
        glGetShaderInfoLog(shader, n, nullptr, &log[0]);
    while (!log.empty() && (log.back() == '\0' || log.back() == '\n'))
        log.pop_back();
    return log;
}

std::string ProgramLog(GLuint program)
{
    GLint n = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &n);
    std::string log(n > 0 ? (size_t)n : 0, '\0');
    if (n > 0)
        glGetProgramInfoLog(program, n, nullptr, &log[0]);
    while (!log.empty() && (log.back() == '\0' || log.back() == '\n'))
        log.pop_back();
    return log;
}

struct Stage
{
    GLenum type;
    char const* suffix;
    char const* label;
    bool required;
};

} // namespace

eProgramLibrary& eProgramLibrary::Get()
{
    // Never destroyed: its programs belong to a context that lives as long as the process.
    static eProgramLibrary* s_pLibrary = new eProgramLibrary();
    return *s_pLibrary;
}

eProgramLibrary::eProgramLibrary()
{
    char const* env = std::getenv("KYR_SHADER_PATH");
    m_strPath = (env && *env) ? std::string(env) : DefaultShaderPath();
}

eProgramLibrary::~eProgramLibrary() {}

void eProgramLibrary::SetShaderPath(std::string const& path)
{
    m_strPath = path;
}

void eProgramLibrary::Clear()
{
    m_Programs.clear();
}

eRenderProgram* eProgramLibrary::Find(eString const& name)
{
    std::string const& key = name.Str(); // no copy: the look-up runs every frame
    auto it = m_Programs.find(key);
    if (it != m_Programs.end())
        return it->second.get();
    if (!eGLContext::Get().IsReady())
    {
        // Not remembered: the program can be built once there is a context.
        std::fprintf(stderr, "host: program \"%s\" requested before the OpenGL context exists\n",
                     key.c_str());
        return nullptr;
    }
    eRenderProgram* program = Build(key);
    m_Programs[key].reset(program);
    return program;
}

eRenderProgram* eProgramLibrary::Build(std::string const& name)
{
    if (!IsPlainName(name))
    {
        std::fprintf(stderr, "host: unknown program \"%s\"\n", name.c_str());
        return nullptr;
    }

    static Stage const stages[3] = {{GL_VERTEX_SHADER, ".vert", "vertex", true},
                                    {GL_GEOMETRY_SHADER, ".geom", "geometry", false},
                                    {GL_FRAGMENT_SHADER, ".frag", "fragment", true}};
    std::string sources[3];
    bool present[3] = {false, false, false};
    for (int i = 0; i < 3; ++i)
        present[i] = ReadFile(JoinPath(m_strPath, name + stages[i].suffix), sources[i]);
    if (!present[0])
    {
        std::fprintf(stderr, "host: unknown program \"%s\"\n", name.c_str());
        return nullptr;
    }
    if (!present[2])
    {
        std::fprintf(stderr, "host: program \"%s\": no fragment shader %s\n", name.c_str(),
                     JoinPath(m_strPath, name + ".frag").c_str());
        return nullptr;
    }

    GLuint program = glCreateProgram();
    std::vector<GLuint> shaders;
    bool bOk = true;
    for (int i = 0; i < 3 && bOk; ++i)
    {
        if (!present[i])
            continue;
        std::string expanded, error;
        int nFile = 0;
        if (!ExpandIncludes(sources[i], m_strPath, 0, nFile, expanded, error))
        {
            std::fprintf(stderr, "host: program \"%s\": %s shader %s: %s\n", name.c_str(),
                         stages[i].label, JoinPath(m_strPath, name + stages[i].suffix).c_str(),
                         error.c_str());
            bOk = false;
            break;
        }
        GLuint shader = glCreateShader(stages[i].type);
        char const* text = expanded.c_str();
        glShaderSource(shader, 1, &text, nullptr);
        glCompileShader(shader);
        GLint status = GL_FALSE;
        glGetShaderiv(shader, GL_COMPILE_STATUS, &status);
        if (status != GL_TRUE)
        {
            std::fprintf(stderr, "host: program \"%s\": %s shader %s does not compile:\n%s\n",
                         name.c_str(), stages[i].label,
                         JoinPath(m_strPath, name + stages[i].suffix).c_str(),
                         ShaderLog(shader).c_str());
            bOk = false;
        }
        glAttachShader(program, shader);
        shaders.push_back(shader);
    }
    if (bOk)
    {
        for (GLuint i = 0; i < 16; ++i)
            glBindAttribLocation(program, i, s_attributeNames[i]);
        glLinkProgram(program);
        GLint status = GL_FALSE;
        glGetProgramiv(program, GL_LINK_STATUS, &status);
        if (status != GL_TRUE)
        {
            std::fprintf(stderr, "host: program \"%s\" does not link:\n%s\n", name.c_str(),
                         ProgramLog(program).c_str());
            bOk = false;
        }
    }
    for (GLuint shader : shaders)
    {
        glDetachShader(program, shader);
        glDeleteShader(shader);
    }
    if (!bOk)
    {
        glDeleteProgram(program);
        return nullptr;
    }

    eShaderUniform u;
    u.m_nWorldMatrix = glGetUniformLocation(program, "u_worldMatrix");
    u.m_nViewMatrix = glGetUniformLocation(program, "u_viewMatrix");
    u.m_nProjectionMatrix = glGetUniformLocation(program, "u_projectionMatrix");
    u.m_nNormalMatrix = glGetUniformLocation(program, "u_normalMatrix");
    u.m_nTexture0 = glGetUniformLocation(program, "u_texture0");
    u.m_nLightingEnabled = glGetUniformLocation(program, "u_lightingEnabled");
    u.m_nAmbient = glGetUniformLocation(program, "u_ambient");
    u.m_nDiffuse = glGetUniformLocation(program, "u_diffuse");
    u.m_nSpecular = glGetUniformLocation(program, "u_specular");
    u.m_nShininess = glGetUniformLocation(program, "u_shininess");
    u.m_nTextureEnabled = glGetUniformLocation(program, "u_textureEnabled");
    u.m_nColor = glGetUniformLocation(program, "u_color");
    u.m_nTexture1 = glGetUniformLocation(program, "u_texture1");

    std::vector<std::string> roles;
    for (int i = 0; i < 3; ++i)
        if (present[i])
            ParseRoles(sources[i], roles);
    if (roles.size() > (size_t)eShaderUniform::MAX_CUSTOM)
        std::fprintf(stderr, "host: program \"%s\": %zu roles, only the first %d are used\n",
                     name.c_str(), roles.size(), (int)eShaderUniform::MAX_CUSTOM);
    for (size_t i = 0; i < roles.size() && i < (size_t)eShaderUniform::MAX_CUSTOM; ++i)
        if (roles[i] != "-")
            u.m_nCustom[i] = glGetUniformLocation(program, roles[i].c_str());

    return new eRenderProgram(eString(name), new eProgram(program), u);
}

std::string UniformNameAt(unsigned int program, int location)
{
    if (program == 0 || location < 0 || !glIsProgram(program))
        return std::string();
    GLint nCount = 0, nMaxLength = 0;
    glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &nCount);
    glGetProgramiv(program, GL_ACTIVE_UNIFORM_MAX_LENGTH, &nMaxLength);
    std::vector<char> buf((size_t)nMaxLength + 1, '\0');
    for (GLint i = 0; i < nCount; ++i)
    {
        GLint nSize = 0;
        GLenum type = 0;
        GLsizei nLength = 0;
        glGetActiveUniform(program, (GLuint)i, (GLsizei)buf.size(), &nLength, &nSize, &type,
                           buf.data());
        std::string name(buf.data(), (size_t)nLength);
        size_t bracket = name.find('[');
        if (bracket != std::string::npos && name.compare(bracket, 3, "[0]") == 0 &&
            bracket + 3 == name.size())
            name.resize(bracket);
        GLint base = glGetUniformLocation(program, name.c_str());
        if (base < 0)
            continue;
        if (base == location)
            return name;
        if (nSize > 1 && location > base && location < base + nSize)
        {
            std::string element = name + "[" + std::to_string(location - base) + "]";
            if (glGetUniformLocation(program, element.c_str()) == location)
                return element;
        }
    }
    return std::string();
}

} // namespace Host
} // namespace KYR
