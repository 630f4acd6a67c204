# The C++ libraries of a build with libc++ (the preset libcxx). Debian's binaries of them are for libstdc++, so they are
# compiled with the program. `./dev test libcxx` sets these variables:
#
#   QUILLERY_LIBCXX   the folder of libc++, with include/ and lib/
#   QUILLERY_ABSEIL   the folder of Abseil's sources
add_compile_options(-nostdinc++ "SHELL:-isystem '${QUILLERY_LIBCXX}/include/c++/v1'")
# The older kind of search path, which libc++ itself is searched by for the libraries that it needs.
add_link_options(-stdlib=libc++ "-L${QUILLERY_LIBCXX}/lib" "LINKER:-rpath,${QUILLERY_LIBCXX}/lib,--disable-new-dtags")

function(provide_from_sources method package)
  set(CMAKE_UNITY_BUILD OFF)  # these sources are not made for joining
  if("${package}" STREQUAL "absl")
    set(ABSL_PROPAGATE_CXX_STD ON)
    add_subdirectory("${QUILLERY_ABSEIL}" abseil EXCLUDE_FROM_ALL SYSTEM)
    set(absl_FOUND TRUE PARENT_SCOPE)
  elseif("${package}" STREQUAL "GTest")
    add_subdirectory(/usr/src/googletest googletest EXCLUDE_FROM_ALL SYSTEM)
    set(GTest_FOUND TRUE PARENT_SCOPE)
  endif()
endfunction()
cmake_language(SET_DEPENDENCY_PROVIDER provide_from_sources SUPPORTED_METHODS FIND_PACKAGE)

# What nearly all sources include of libc++ takes longer to compile than the sources, so it is compiled once.
function(compile_faster)
  get_property(targets DIRECTORY PROPERTY BUILDSYSTEM_TARGETS)
  list(FILTER targets INCLUDE REGEX "^quillery_")
  list(REMOVE_ITEM targets quillery_options quillery_values)
  target_precompile_headers(
    quillery_values PRIVATE <algorithm> <array> <charconv> <chrono> <filesystem> <fstream> <functional> <iostream> <map>
                            <memory> <optional> <set> <span> <string> <unordered_map> <variant> <vector>)
  foreach(target ${targets})
    target_precompile_headers(${target} REUSE_FROM quillery_values)
  endforeach()
endfunction()
cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL compile_faster)
