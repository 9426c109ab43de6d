#include "eDataPaths.h"

#include <dlfcn.h>
#include <sys/stat.h>

// Paths relative to the library's folder, given by the build (see CMakeLists.txt).
#ifndef KYR_BUILD_SHADER_SUBDIR
#define KYR_BUILD_SHADER_SUBDIR "Shaders"
#endif
#ifndef KYR_BUILD_WORK_SUBDIR
#define KYR_BUILD_WORK_SUBDIR "work"
#endif
#ifndef KYR_INSTALL_DATA_SUBDIR
#define KYR_INSTALL_DATA_SUBDIR "../share/KyrRenderEffect"
#endif

namespace KYR
{
namespace Host
{

namespace
{

bool IsFolder(std::string const& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// The build tree's folder when it exists beside the library, else the install's.
std::string Pick(char const* buildSubdir, char const* installSubdir)
{
    std::string base = HostLibraryFolder();
    std::string build = base + buildSubdir + "/";
    if (IsFolder(build))
        return build;
    return base + installSubdir + "/";
}

} // namespace

std::string HostLibraryFolder()
{
    Dl_info info;
    if (!dladdr(reinterpret_cast<void*>(&HostLibraryFolder), &info) || !info.dli_fname)
        return "./";
    std::string file = info.dli_fname;
    std::string::size_type slash = file.rfind('/');
    return slash == std::string::npos ? std::string("./") : file.substr(0, slash + 1);
}

std::string DefaultShaderPath()
{
    return Pick(KYR_BUILD_SHADER_SUBDIR, KYR_INSTALL_DATA_SUBDIR "/Shaders");
}

std::string DefaultWorkPath()
{
    return Pick(KYR_BUILD_WORK_SUBDIR, KYR_INSTALL_DATA_SUBDIR);
}

} // namespace Host
} // namespace KYR
