# Targets shared by every folder of the project.

add_library(vornu_warnings INTERFACE)
target_compile_options(vornu_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(VORNU_WARNINGS_AS_ERRORS)
  target_compile_options(vornu_warnings INTERFACE -Werror)
endif()

if(VORNU_SANITIZE)
  add_compile_options(-fsanitize=${VORNU_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VORNU_SANITIZE})
endif()

# vornu_library(<name> <folder> [EXCLUDE <file>...]): a static library of every source below the folder.
function(vornu_library name folder)
  cmake_parse_arguments(ARG "" "" "EXCLUDE" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/${folder}/*.cpp")
  foreach(file IN LISTS ARG_EXCLUDE)
    list(REMOVE_ITEM sources "${CMAKE_SOURCE_DIR}/${folder}/${file}")
  endforeach()
  add_library(${name} STATIC ${sources})
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_include_directories(${name} PUBLIC
    "$<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>" "$<INSTALL_INTERFACE:include/vornu>")
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:vornu_warnings>)
endfunction()

# vornu_program(<name> <folder> <library>): a program of the main.cpp in the folder over a library of its own.
function(vornu_program name folder library)
  add_executable(${name} ${folder}/main.cpp)
  target_link_libraries(${name} PRIVATE ${library} vornu_warnings)
  # Finding the symbols of the C++ library would take a good part of a short run.
  if(NOT VORNU_SANITIZE)
    target_link_options(${name} PRIVATE $<$<CONFIG:Release>:-static-libstdc++> $<$<CONFIG:Release>:-static-libgcc>)
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
endfunction()

# vornu_test(<name> <folder> <libraries>...): one test program of every source below tests/<folder>.
function(vornu_test name folder)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/${folder}/*.cpp")
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${ARGN} vornu_warnings GTest::gtest GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE
    VORNU_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data" VORNU_EXAMPLES="${CMAKE_SOURCE_DIR}/examples")
  add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
endfunction()
