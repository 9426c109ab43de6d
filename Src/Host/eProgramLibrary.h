// The host's shader programs, compiled on first use from <shader path>/<Name>.vert, an
// optional <Name>.geom and <Name>.frag. Src/Host/Shaders/README.md tells the conventions
// (attribute names, fixed uniform names, the "// roles:" line).
#pragma once
#include "eString.h"

#include <map>
#include <memory>
#include <string>

namespace KYR
{

class eRenderProgram;

namespace Host
{

class eProgramLibrary
{
public:
    static eProgramLibrary& Get();

    // The program of that name, built on first use; null when there is no such program or
    // it does not compile or link (reported once on stderr; the failure is remembered).
    eRenderProgram* Find(eString const& name);

    // Folder of the shader files. The default is $KYR_SHADER_PATH, else the Shaders folder
    // beside the host library (build tree) or in its install prefix (eDataPaths.h). Programs already built stay until Clear().
    void SetShaderPath(std::string const& path);
    std::string const& GetShaderPath() const { return m_strPath; }

    // Forgets every program (deleting those built) and every remembered failure.
    void Clear();

    eProgramLibrary(eProgramLibrary const&) = delete;
    eProgramLibrary& operator=(eProgramLibrary const&) = delete;

private:
    eProgramLibrary();
    ~eProgramLibrary();
    eRenderProgram* Build(std::string const& name);

    std::string m_strPath;
    std::map<std::string, std::unique_ptr<eRenderProgram>> m_Programs; // null: failed
};

// GLSL name of the active uniform at `location` in `program`: the plain name for a single
// uniform or the first element of an array, "name[i]" for a later element; empty when none.
std::string UniformNameAt(unsigned int program, int location);

} // namespace Host
} // namespace KYR
