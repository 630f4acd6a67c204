# Builds for macOS 12 on Linux, with the compiler, the C++ library and the C library's stubs that come with zig, against
# our own declarations of the system's frameworks and stubs made from them. `./dev macos` sets these variables:
#
#   QUILLERY_ZIG               the path of zig
#   QUILLERY_MAC_PROCESSOR     arm64 or x86_64
#   QUILLERY_FRAMEWORK_STUBS   the folder of the stubs from tools/macos/make_stubs.py
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${QUILLERY_MAC_PROCESSOR})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUILLERY_ZIG QUILLERY_MAC_PROCESSOR QUILLERY_FRAMEWORK_STUBS)

set(zig_processor ${QUILLERY_MAC_PROCESSOR})
if(zig_processor STREQUAL "arm64")
  set(zig_processor aarch64)
endif()
set(CMAKE_CXX_COMPILER "${QUILLERY_ZIG}" c++)
# By default zig adds debug information and checks for undefined behaviour. The framework headers are our own.
set(CMAKE_CXX_FLAGS_INIT "-target ${zig_processor}-macos.12.0 -fno-sanitize=undefined -g0 \
-isystem ${CMAKE_CURRENT_LIST_DIR}/include")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-F${QUILLERY_FRAMEWORK_STUBS} -L${QUILLERY_FRAMEWORK_STUBS}")

# zig is both the archiver and the compiler; its first argument selects one.
set(CMAKE_CXX_ARCHIVE_CREATE "\"${QUILLERY_ZIG}\" ar qcs <TARGET> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_APPEND "\"${QUILLERY_ZIG}\" ar qs <TARGET> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "")

# The libraries and headers of the build machine are not for the target.
set(CMAKE_FIND_ROOT_PATH ${QUILLERY_FRAMEWORK_STUBS})
foreach(kind LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
