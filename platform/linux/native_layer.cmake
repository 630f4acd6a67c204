# The Linux layer: property lists, the system, and the session.

# What both systems share.
file(GLOB posix_sources CONFIGURE_DEPENDS platform/posix/*.cpp)
add_library(quillery_posix STATIC ${posix_sources})
target_link_libraries(quillery_posix PUBLIC quillery_values)

# Property lists by hand; of libraries only ICU's converters, for XML in other encodings than UTF-8, and Abseil's
# reader of numbers.
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(absl REQUIRED)
file(GLOB plist_sources CONFIGURE_DEPENDS platform/linux/plist/*.cpp)
add_library(quillery_plist STATIC ${plist_sources})
target_link_libraries(quillery_plist PUBLIC quillery_values PRIVATE quillery_posix ICU::uc absl::strings)

find_package(PkgConfig REQUIRED)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
file(GLOB linux_sources CONFIGURE_DEPENDS platform/linux/*.cpp)
list(FILTER linux_sources EXCLUDE REGEX "main\\.cpp$")
add_library(quillery_linux STATIC ${linux_sources})
target_link_libraries(quillery_linux PUBLIC quillery_values PRIVATE quillery_plist quillery_posix ICU::uc ICU::i18n
                                                                  absl::time PkgConfig::SYSTEMD)

# The user's session: buses, timers, desktop entries. For any toolkit with an event loop, so it links none.
file(GLOB session_sources CONFIGURE_DEPENDS platform/linux/session/*.cpp)
add_library(quillery_linux_session STATIC ${session_sources})
target_link_libraries(quillery_linux_session PUBLIC quillery_linux PRIVATE PkgConfig::SYSTEMD)

# The updater, for any toolkit with windows and a network.
find_package(OpenSSL 3 REQUIRED COMPONENTS Crypto)
find_package(EXPAT REQUIRED)
file(GLOB updates_sources CONFIGURE_DEPENDS platform/linux/updates/*.cpp)
set(product_update_source ${PROJECT_SOURCE_DIR}/platform/linux/updates/product_update_source.cpp)
list(REMOVE_ITEM updates_sources ${product_update_source})  # only the shipped program has it
add_library(quillery_linux_updates STATIC ${updates_sources})
target_link_libraries(quillery_linux_updates PUBLIC quillery_linux_session PRIVATE EXPAT::EXPAT OpenSSL::Crypto
                                                                                   PkgConfig::SYSTEMD)

# What answers for /bin/launchctl, a program of its own.
add_executable(quillery-launchctl platform/linux/launchctl_main.cpp)
target_link_libraries(quillery-launchctl PRIVATE quillery_linux)
install(TARGETS quillery-launchctl DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/quillery)

add_library(quillery_native ALIAS quillery_linux)
