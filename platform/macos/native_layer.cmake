# The macOS layer: Objective-C++ with ARC over the system's frameworks.
file(GLOB macos_sources CONFIGURE_DEPENDS platform/macos/*.mm platform/posix/*.cpp)
# Foundation parses property lists here, with memory of its own.
list(FILTER macos_sources EXCLUDE REGEX "/large_memory\\.cpp$")
add_library(quillery_native STATIC ${macos_sources})
target_compile_options(quillery_native PRIVATE -fobjc-arc)
target_link_libraries(quillery_native PUBLIC quillery_values PRIVATE "-framework AppKit" "-framework Foundation"
                                                                   "-framework CoreFoundation" -lobjc)

# The desktop, which the companion does not load. Sparkle is not part of the system; its framework is in SPARKLE_FOLDER.
file(GLOB macos_desktop_sources CONFIGURE_DEPENDS platform/macos/desktop/*.mm)
add_library(quillery_native_desktop STATIC ${macos_desktop_sources})
# As a system framework, because its headers do not compile with our warnings.
target_compile_options(quillery_native_desktop PRIVATE -fobjc-arc "SHELL:-iframework '${SPARKLE_FOLDER}'")
target_link_libraries(quillery_native_desktop PUBLIC quillery_native
                                              PRIVATE "-framework CoreGraphics" "-framework ServiceManagement" "-F${SPARKLE_FOLDER}"
                                                      "-framework Sparkle")
# CMake joins sources as C++, which Objective-C++ is not.
set_target_properties(quillery_native quillery_native_desktop PROPERTIES UNITY_BUILD OFF)
target_link_options(quillery_native_desktop INTERFACE "LINKER:-rpath,@executable_path/../Frameworks")
