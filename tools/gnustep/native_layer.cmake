# The macOS layer on Linux (the preset gnustep): platform/macos over GNUstep, a free implementation of Foundation and
# AppKit, with a rig for what that lacks. Only for tests; `./dev gnustep` has the packages.
set(GNUSTEP_HEADERS /usr/include/GNUstep)
find_library(GNUSTEP_GUI gnustep-gui REQUIRED)
find_library(GNUSTEP_BASE gnustep-base REQUIRED)
find_library(LIBOBJC NAMES libobjc.so.4 REQUIRED)

# How sources are compiled and linked against GNUstep. With each program comes the rig, because parts of it replace
# symbols of GNUstep and of GCC's libobjc.
add_library(gnustep_options INTERFACE)
target_compile_options(
  gnustep_options INTERFACE -fobjc-runtime=gnustep-1.9 -fobjc-legacy-dispatch -fobjc-exceptions -fblocks
                            -fconstant-string-class=NSConstantString -D_NATIVE_OBJC_EXCEPTIONS -DGNUSTEP)
target_include_directories(gnustep_options SYSTEM INTERFACE ${CMAKE_CURRENT_LIST_DIR}/include ${GNUSTEP_HEADERS})

set(rig ${CMAKE_CURRENT_LIST_DIR})
add_library(gnustep_rig OBJECT ${rig}/runtime.cpp ${rig}/exceptions.cpp ${rig}/sanitizers.cpp ${rig}/blocks.mm)
target_link_libraries(gnustep_rig PRIVATE quillery_options gnustep_options)
# The sanitizer of undefined behaviour would check what is done on purpose here.
target_compile_options(gnustep_rig PRIVATE -fno-sanitize=undefined)
file(GLOB stand_ins CONFIGURE_DEPENDS ${rig}/*stand_in*.mm)
add_library(gnustep_stand_ins OBJECT ${stand_ins})
target_link_libraries(gnustep_stand_ins PRIVATE quillery_options gnustep_options)
target_compile_options(gnustep_stand_ins PRIVATE -fobjc-arc)

add_library(gnustep INTERFACE)
target_link_libraries(gnustep INTERFACE gnustep_rig $<TARGET_OBJECTS:gnustep_rig> gnustep_stand_ins $<TARGET_OBJECTS:gnustep_stand_ins>
                                        ${GNUSTEP_GUI} ${GNUSTEP_BASE} ${LIBOBJC})
target_link_options(gnustep INTERFACE -rdynamic LINKER:--wrap=__objc_exec_class)

# CMake joins sources as C++, which Objective-C++ is not.
set_target_properties(gnustep_rig gnustep_stand_ins PROPERTIES UNITY_BUILD OFF)

# The layer itself, as it is.
function(add_layer name)
  file(GLOB sources CONFIGURE_DEPENDS ${ARGN})
  list(FILTER sources EXCLUDE REGEX "/large_memory\\.cpp$")
  add_library(${name} STATIC ${sources})
  list(FILTER sources INCLUDE REGEX "\\.mm$")
  set_source_files_properties(${sources} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  target_compile_options(${name} PRIVATE -fobjc-arc --coverage)
  target_link_libraries(${name} PUBLIC quillery_values PRIVATE gnustep_options INTERFACE gnustep)
  target_link_options(${name} INTERFACE --coverage)
endfunction()
add_layer(quillery_native platform/macos/*.mm platform/posix/*.cpp)
add_layer(quillery_native_desktop platform/macos/desktop/*.mm)
target_link_libraries(quillery_native_desktop PUBLIC quillery_native)
