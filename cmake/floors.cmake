# vorn_floor(NAME SOURCES ... BUILDS_ON ...): one floor of the library as one static library. A floor
# sees what it builds on and nothing above it: the unit tests link each floor alone with what it
# names here, so that a call upwards does not link.
function(vorn_floor name)
    cmake_parse_arguments(FLOOR "" "" "SOURCES;BUILDS_ON" ${ARGN})
    add_library(vorn_${name} STATIC ${FLOOR_SOURCES})
    target_include_directories(vorn_${name} PUBLIC
        "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}/include")
    # The floors are linked into the library: inside it, the public names are its own.
    target_compile_definitions(vorn_${name} PRIVATE VORN64_BUILDING)
    if(NOT BUILD_SHARED_LIBS)
        target_compile_definitions(vorn_${name} PUBLIC VORN64_STATIC)
    endif()
    target_link_libraries(vorn_${name} PRIVATE vorn_warnings vorn_hardening)
    foreach(lower IN LISTS FLOOR_BUILDS_ON)
        target_link_libraries(vorn_${name} PUBLIC vorn_${lower})
    endforeach()
endfunction()
