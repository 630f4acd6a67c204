# The libraries of the tests for another system than the one that builds: compiled from Debian's sources, in the place of
# the packages that are for this one.
# Nobody runs them where they are built, so they are not worth optimising.
add_compile_options(-O0)

set(googletest_folder /usr/src/googletest)
add_library(googletest STATIC ${googletest_folder}/googletest/src/gtest-all.cc
                              ${googletest_folder}/googlemock/src/gmock-all.cc)
target_include_directories(
  googletest SYSTEM
  PUBLIC ${googletest_folder}/googletest/include ${googletest_folder}/googlemock/include
  PRIVATE ${googletest_folder}/googletest ${googletest_folder}/googlemock)
add_library(googletest_main STATIC ${googletest_folder}/googlemock/src/gmock_main.cc)
target_link_libraries(googletest_main PUBLIC googletest)
add_library(GTest::gtest ALIAS googletest)
add_library(GTest::gmock ALIAS googletest)
add_library(GTest::gtest_main ALIAS googletest_main)

# Only headers, but in a folder with all those of the system that builds.
file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/include)
file(CREATE_LINK /usr/include/nlohmann ${CMAKE_CURRENT_BINARY_DIR}/include/nlohmann SYMBOLIC)
add_library(nlohmann_json INTERFACE)
target_include_directories(nlohmann_json SYSTEM INTERFACE ${CMAKE_CURRENT_BINARY_DIR}/include)
add_library(nlohmann_json::nlohmann_json ALIAS nlohmann_json)

# What nearly all tests include takes longer to read than the tests themselves, so it is read once. zig does not know the
# option that says a file is a header, and its cache may answer with a result that is older than a file of equal content.
set(CMAKE_CXX_COMPILE_OPTIONS_CREATE_PCH -Xclang -emit-pch -Xclang -fno-pch-timestamp -Xclang -include
                                         -Xclang <PCH_HEADER>)
