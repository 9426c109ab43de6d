# `cmake --install`: the two libraries, their public headers, the host's shader programs and
# the generated resources, an exported CMake package (find_package(KyrRenderEffect) gives
# KyrRenderEffect::KyrRenderEffect and KyrRenderEffect::KyrHost) and a pkg-config file.
#
#   <prefix>/lib/libKyrHost.so, libKyrRenderEffect.so
#   <prefix>/include/KyrRenderEffect/{Base,Host,RenderEffect}/*.h
#   <prefix>/share/KyrRenderEffect/Shaders/, Resources/   (found by the host beside its library)
#   <prefix>/lib/cmake/KyrRenderEffect/, <prefix>/lib/pkgconfig/KyrRenderEffect.pc
#   <prefix>/bin/kyr-gallery, kyr-viewer
include(CMakePackageConfigHelpers)

set(KYR_INSTALL_INCLUDE ${CMAKE_INSTALL_INCLUDEDIR}/KyrRenderEffect)
set(KYR_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/KyrRenderEffect)

# Installed programs find the libraries beside them; the libraries find each other.
file(RELATIVE_PATH _kyr_bin_to_lib /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
set_target_properties(KyrHost KyrRenderEffect PROPERTIES INSTALL_RPATH "$ORIGIN")
foreach(_kyr_program kyr-gallery kyr-viewer)
    if(TARGET ${_kyr_program})
        set_target_properties(${_kyr_program} PROPERTIES INSTALL_RPATH "$ORIGIN/${_kyr_bin_to_lib}")
        install(TARGETS ${_kyr_program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    endif()
endforeach()

install(TARGETS KyrHost KyrRenderEffect EXPORT KyrRenderEffectTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

# Public headers: the value types, the host contract, the effects, and the two headers of the
# reference host an application needs to make a scene (eScene.h) and to point the host at
# other shader programs (eProgramLibrary.h).
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/Base/ DESTINATION ${KYR_INSTALL_INCLUDE}/Base
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/Host/ DESTINATION ${KYR_INSTALL_INCLUDE}/Host
        FILES_MATCHING PATTERN "*.h")
install(FILES ${CMAKE_SOURCE_DIR}/Src/Host/eScene.h ${CMAKE_SOURCE_DIR}/Src/Host/eProgramLibrary.h
        DESTINATION ${KYR_INSTALL_INCLUDE}/Host)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/Src/RenderEffect/ DESTINATION ${KYR_INSTALL_INCLUDE}/RenderEffect
        FILES_MATCHING PATTERN "*.h")

install(DIRECTORY ${CMAKE_SOURCE_DIR}/Src/Host/Shaders/ DESTINATION ${KYR_INSTALL_DATADIR}/Shaders)
install(DIRECTORY ${KYR_WORK_DIR}/Resources DESTINATION ${KYR_INSTALL_DATADIR}
        PATTERN ".stamp" EXCLUDE)

install(EXPORT KyrRenderEffectTargets NAMESPACE KyrRenderEffect::
        DESTINATION ${KYR_INSTALL_CMAKEDIR})
file(WRITE ${CMAKE_BINARY_DIR}/KyrRenderEffectConfig.cmake
     "include(\"\${CMAKE_CURRENT_LIST_DIR}/KyrRenderEffectTargets.cmake\")\n")
write_basic_package_version_file(${CMAKE_BINARY_DIR}/KyrRenderEffectConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/KyrRenderEffectConfig.cmake
              ${CMAKE_BINARY_DIR}/KyrRenderEffectConfigVersion.cmake
        DESTINATION ${KYR_INSTALL_CMAKEDIR})

# pkg-config: the prefix is found from the .pc file's own place, so --prefix at install time
# needs nothing else.
file(RELATIVE_PATH KYR_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${CMAKE_SOURCE_DIR}/cmake/KyrRenderEffect.pc.in
               ${CMAKE_BINARY_DIR}/KyrRenderEffect.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/KyrRenderEffect.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
