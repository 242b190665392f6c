# What an installed tree holds. It can be moved: nothing in it names the place where it was installed.
#
# On Windows programs and libraries are looked for beside the program and the configuration in the
# current directory, so these lie at the top of the tree.
if(WIN32)
    set(program_dir .)
    set(configuration_dir .)
else()
    set(program_dir "${CMAKE_INSTALL_BINDIR}")
    set(configuration_dir "${CMAKE_INSTALL_DATADIR}/vorn64")
endif()

# Outside the system's own folders the loader does not look for the library by itself. A static program
# has no loader, and does not start when it names a path for one.
if(BUILD_SHARED_LIBS AND NOT WIN32 AND NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    file(RELATIVE_PATH library_from_program
        "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(vorn PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_program}")
endif()
install(TARGETS vorn RUNTIME DESTINATION "${program_dir}")
install(FILES share/VORNconfig.xml DESTINATION "${configuration_dir}")
if(NOT WIN32)
    install(FILES share/man/vorn.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
    install(FILES share/man/VORNconfig.xml.5 DESTINATION "${CMAKE_INSTALL_MANDIR}/man5")
    install(FILES share/completion/vorn
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
endif()

# Without the shared library there is nothing to build a host with: the floors are not installed.
if(NOT BUILD_SHARED_LIBS)
    return()
endif()

include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/vorn64")
install(TARGETS vorn64 EXPORT vorn64-targets
    RUNTIME DESTINATION "${program_dir}"
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(FILES include/vorn/vorn.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/vorn")
install(EXPORT vorn64-targets NAMESPACE vorn:: DESTINATION "${package_dir}")
configure_package_config_file(cmake/vorn64-config.cmake.in
    "${CMAKE_BINARY_DIR}/vorn64-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/vorn64-config-version.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES
    "${CMAKE_BINARY_DIR}/vorn64-config.cmake"
    "${CMAKE_BINARY_DIR}/vorn64-config-version.cmake"
    DESTINATION "${package_dir}")

if(WIN32)
    # The runtime that library and host share.
    install(FILES ${VORN_RUNTIME_LIBRARIES} DESTINATION "${program_dir}")
else()
    file(RELATIVE_PATH VORN_PREFIX_FROM_PKGCONFIG
        "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    string(REGEX REPLACE "/$" "" VORN_PREFIX_FROM_PKGCONFIG "${VORN_PREFIX_FROM_PKGCONFIG}")
    configure_file(cmake/vorn64.pc.in "${CMAKE_BINARY_DIR}/vorn64.pc" @ONLY)
    install(FILES "${CMAKE_BINARY_DIR}/vorn64.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endif()

# The example, with the sources that a host's author starts from.
if(WIN32)
    set(example_dir examples/host)
else()
    set(example_dir "${CMAKE_INSTALL_DOCDIR}/examples/host")
endif()
install(FILES examples/host/CMakeLists.txt examples/host/host.cpp DESTINATION "${example_dir}")
