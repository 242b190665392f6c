# Dependencies, all from the distribution's packages. A cross build uses the same sources: headers of
# rapidxml through a folder that holds nothing else, GoogleTest from its packaged source.
set(VORN_RAPIDXML_DIR "/usr/include/rapidxml" CACHE PATH "Folder of the rapidxml headers")
set(VORN_GOOGLETEST_SOURCE_DIR "/usr/src/googletest" CACHE PATH "Source of GoogleTest")

if(NOT EXISTS "${VORN_RAPIDXML_DIR}/rapidxml.hpp")
    message(FATAL_ERROR "rapidxml.hpp is not in ${VORN_RAPIDXML_DIR}: install librapidxml-dev")
endif()
file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/dependencies")
file(CREATE_LINK "${VORN_RAPIDXML_DIR}" "${CMAKE_BINARY_DIR}/dependencies/rapidxml" SYMBOLIC)
add_library(vorn_rapidxml INTERFACE)
target_include_directories(vorn_rapidxml SYSTEM INTERFACE "${CMAKE_BINARY_DIR}/dependencies")

find_package(Threads REQUIRED)

# Turning the display on Linux; without it that step does nothing. A static program has no X client.
if(NOT CMAKE_CROSSCOMPILING AND NOT VORN_STATIC_PROGRAM)
    find_package(PkgConfig QUIET)
    if(PKG_CONFIG_FOUND)
        pkg_check_modules(VORN_XRANDR QUIET IMPORTED_TARGET xrandr x11)
    endif()
endif()

if(CMAKE_CROSSCOMPILING OR VORN_STATIC_PROGRAM OR CMAKE_CXX_FLAGS MATCHES "sanitize")
    set(VORN_BENCHMARKS OFF)
else()
    find_package(benchmark QUIET)
    set(VORN_BENCHMARKS ${benchmark_FOUND})
endif()

# The compiler's runtime for Windows, which the library, the program and every host share.
if(WIN32)
    set(VORN_RUNTIME_LIBRARIES "")
    foreach(runtime libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
        execute_process(
            COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime}
            OUTPUT_VARIABLE runtime_path OUTPUT_STRIP_TRAILING_WHITESPACE)
        list(APPEND VORN_RUNTIME_LIBRARIES "${runtime_path}")
    endforeach()
endif()
