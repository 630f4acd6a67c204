# Builds for macOS 12 on Linux, with the compiler, the C++ library and the C library's stubs that zig brings, against
# our own declarations of the system's frameworks and stubs made of them. `./dev macos` gives the values below.
#
#   QUILLERY_ZIG               zig's path
#   QUILLERY_MAC_PROCESSOR     arm64 or x86_64
#   QUILLERY_FRAMEWORK_STUBS   the folder of the stubs that tools/macos/make_stubs.py made
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${QUILLERY_MAC_PROCESSOR})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUILLERY_ZIG QUILLERY_MAC_PROCESSOR QUILLERY_FRAMEWORK_STUBS)

set(zig_processor ${QUILLERY_MAC_PROCESSOR})
if(zig_processor STREQUAL "arm64")
  set(zig_processor aarch64)
endif()
set(CMAKE_CXX_COMPILER "${QUILLERY_ZIG}" c++)
# zig adds debug information and checks for undefined behaviour unless told otherwise; its frameworks are ours.
set(CMAKE_CXX_FLAGS_INIT "-target ${zig_processor}-macos.12.0 -fno-sanitize=undefined -g0 \
-isystem ${CMAKE_CURRENT_LIST_DIR}/include")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-F${QUILLERY_FRAMEWORK_STUBS} -L${QUILLERY_FRAMEWORK_STUBS}")

# One program is the archiver and the compiler, so its first argument has to say which.
set(CMAKE_CXX_ARCHIVE_CREATE "\"${QUILLERY_ZIG}\" ar qcs <TARGET> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_APPEND "\"${QUILLERY_ZIG}\" ar qs <TARGET> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "")

# Nothing of the machine that builds is for the machine that runs.
set(CMAKE_FIND_ROOT_PATH ${QUILLERY_FRAMEWORK_STUBS})
foreach(kind LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
