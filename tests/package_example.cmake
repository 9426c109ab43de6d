# Installs the build below SCRATCH, builds EXAMPLE_DIR against it twice (find_package and
# pkg-config), runs both with no KYR_* paths in the environment and checks their pictures.
# cmake -DBUILD_DIR= -DEXAMPLE_DIR= -DSCRATCH= -DCXX= -DCHECK= -P package_example.cmake
function(run what)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "${what} failed (${rc}):\n${out}")
    endif()
    message(STATUS "${what}: ok")
endfunction()

file(REMOVE_RECURSE ${SCRATCH})
set(prefix ${SCRATCH}/prefix)
run("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run("configure the example" ${CMAKE_COMMAND} -S ${EXAMPLE_DIR} -B ${SCRATCH}/build
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX})
run("build the example" ${CMAKE_COMMAND} --build ${SCRATCH}/build)

include(GNUInstallDirs)
set(ENV{PKG_CONFIG_PATH} ${prefix}/${CMAKE_INSTALL_LIBDIR}/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs KyrRenderEffect RESULT_VARIABLE rc
                OUTPUT_VARIABLE flags ERROR_VARIABLE err OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT rc EQUAL 0)
    message(FATAL_ERROR "pkg-config KyrRenderEffect failed:\n${err}")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run("build the example with pkg-config" ${CXX} -std=c++17 ${EXAMPLE_DIR}/main.cpp ${flags}
    -Wl,-rpath,${prefix}/${CMAKE_INSTALL_LIBDIR} -o ${SCRATCH}/kyr-minimal-pc)

foreach(program ${SCRATCH}/build/kyr-minimal ${SCRATCH}/kyr-minimal-pc)
    get_filename_component(name ${program} NAME)
    run("run ${name}" ${CMAKE_COMMAND} -E env --unset=KYR_WORK_PATH --unset=KYR_SHADER_PATH
        ${program} ${SCRATCH}/${name}.png)
    run("look at ${name}.png" ${CHECK} ${SCRATCH}/${name}.png --size 640x480 --min-cover 0.2)
endforeach()
