# What `cmake --install` lays down: the program, the library with its public
# headers, the CMake package of find_package(kestro), the man page, the shell
# completions and the papers.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kestro)

if(TARGET kestro)
  install(TARGETS kestro)
endif()
install(TARGETS kestro_core EXPORT kestro_targets)
install(DIRECTORY include/kestro DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT kestro_targets NAMESPACE kestro:: DESTINATION ${package_dir}
        FILE kestro-targets.cmake)
configure_package_config_file(cmake/kestro-config.cmake.in
                              kestro-config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(kestro-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kestro-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/kestro-config-version.cmake
        DESTINATION ${package_dir})

install(FILES man/kestro.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES completions/kestro.bash RENAME kestro
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/_kestro
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES LICENSE README.md CHANGELOG.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL
        FILES_MATCHING PATTERN "*.md")
