# Sparkle, pinned by version and checksum. CMake fetches it while configuring, on a Mac only, where it also goes into
# the bundle. To use another copy, set SPARKLE_FOLDER to the folder that contains Sparkle.framework.
if(NOT SPARKLE_FOLDER)
  include(FetchContent)
  FetchContent_Declare(
    sparkle
    URL https://github.com/sparkle-project/Sparkle/releases/download/2.9.6/Sparkle-for-Swift-Package-Manager.zip
    URL_HASH SHA256=8d5fb41d960b43f4a68aa14126bf62b098544ec8d191cdcc73eb14e63a8e7606)
  FetchContent_MakeAvailable(sparkle)
  set(SPARKLE_FOLDER ${sparkle_SOURCE_DIR}/Sparkle.xcframework/macos-arm64_x86_64)
  if(NOT EXISTS ${SPARKLE_FOLDER}/Sparkle.framework/Headers/Sparkle.h)
    message(FATAL_ERROR "Sparkle's archive does not contain ${SPARKLE_FOLDER}/Sparkle.framework.")
  endif()
endif()
