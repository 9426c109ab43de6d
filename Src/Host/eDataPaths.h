// Where the host finds its shader programs and the default work path (the folder whose
// Resources/ holds the pictures effects read). Both are looked up beside the host library
// itself, so a build tree or an installed prefix can be moved as a whole: in a build tree
// they are <build>/Shaders and <build>/work/, in an install <prefix>/share/KyrRenderEffect/.
#pragma once
#include <string>

namespace KYR
{
namespace Host
{

// Folder of the running host library, ending in '/'; "./" when it cannot be told.
std::string HostLibraryFolder();

// The shader folder and the work path of the build tree when the library lies in one, else
// those of the install prefix it lies in. Both end in '/'.
std::string DefaultShaderPath();
std::string DefaultWorkPath();

} // namespace Host
} // namespace KYR
