# The engine's libraries: Vornu::vornu_core, Vornu::vornu_reflection, Vornu::vornu_assets, Vornu::vornu_scene.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
find_dependency(glm)
include("${CMAKE_CURRENT_LIST_DIR}/VornuTargets.cmake")
