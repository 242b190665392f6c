# What makes a fault of ours harder to use against the machine: the library and the programs run as
# root and read registers. Every target of ours that ships takes these; systemtests/check_hardening.py
# looks for them in the built files. The sanitizers bring checks of their own.

# vorn_link_statically(TARGET): the program needs no library of the system. On Linux it can still be
# loaded at any address.
function(vorn_link_statically target)
    if(WIN32)
        target_link_options(${target} PRIVATE -static)
    else()
        target_link_options(${target} PRIVATE -static-pie)
    endif()
endfunction()

add_library(vorn_hardening INTERFACE)
if(CMAKE_CXX_FLAGS MATCHES "sanitize")
    return()
endif()
if(WIN32)
    # No time of the build either: equal sources give equal files.
    target_link_options(vorn_hardening INTERFACE
        -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat -Wl,--no-insert-timestamp)
    return()
endif()

# The C library's checks need optimised code, and it warns where there is none.
set(optimised "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
target_compile_options(vorn_hardening INTERFACE
    -fstack-protector-strong
    "$<${optimised}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
target_link_options(vorn_hardening INTERFACE
    -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
if(NOT VORN_STATIC_PROGRAM)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
endif()
