# Lays out an engine root: the program finds its folders by Config/EngineVersion.json. Assets/Exports comes with
# it, so that a user without write permission on the root can run the program.
include(CMakePackageConfigHelpers)

install(TARGETS vornu-upgrade vornu-schema DESTINATION bin)

configure_file(packaging/EngineVersion.json.in "${CMAKE_BINARY_DIR}/EngineVersion.json" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/EngineVersion.json" DESTINATION Config)
install(DIRECTORY DESTINATION Assets/Exports)
install(DIRECTORY DESTINATION Assets/Content)

foreach(program vornu-upgrade vornu-schema)
  install(FILES packaging/${program}.1 DESTINATION share/man/man1)
  install(FILES packaging/completions/${program}.bash
    DESTINATION share/bash-completion/completions RENAME ${program})
  install(FILES packaging/completions/_${program} DESTINATION share/zsh/site-functions)
endforeach()
install(FILES LICENSE README.md DESTINATION share/doc/vornu-upgrade)

install(TARGETS vornu_core vornu_reflection vornu_assets vornu_scene EXPORT VornuTargets DESTINATION lib)
install(DIRECTORY engine DESTINATION include/vornu FILES_MATCHING PATTERN "*.h")
install(EXPORT VornuTargets NAMESPACE Vornu:: DESTINATION lib/cmake/Vornu)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/VornuConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES packaging/VornuConfig.cmake "${CMAKE_BINARY_DIR}/VornuConfigVersion.cmake"
  DESTINATION lib/cmake/Vornu)
