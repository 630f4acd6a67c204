# The Linux layer: property lists, the system, and the desktop.

# Property lists by hand; of libraries only ICU's converters, for XML in other encodings than UTF-8, and Abseil's
# reader of numbers.
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(absl REQUIRED)
file(GLOB plist_sources CONFIGURE_DEPENDS platform/linux/plist/*.cpp)
add_library(quillery_plist STATIC ${plist_sources})
target_link_libraries(quillery_plist PUBLIC quillery_core PRIVATE ICU::uc absl::strings)

find_package(PkgConfig REQUIRED)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
file(GLOB linux_sources CONFIGURE_DEPENDS platform/linux/*.cpp platform/posix/*.cpp)
list(FILTER linux_sources EXCLUDE REGEX "main\\.cpp$")
add_library(quillery_linux STATIC ${linux_sources})
target_link_libraries(quillery_linux PUBLIC quillery_core PRIVATE quillery_plist ICU::uc ICU::i18n absl::time
                                                                  PkgConfig::SYSTEMD)

# What only a program with a main loop has, in a library of its own so that the companion does not load Qt.
find_package(Qt6 REQUIRED COMPONENTS Core DBus Svg Widgets)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)
file(READ packaging/icons/quillery.svg QUILLERY_ICON)
file(READ packaging/icons/quillery-symbolic.svg QUILLERY_SYMBOLIC_ICON)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS packaging/icons/quillery.svg
                                       packaging/icons/quillery-symbolic.svg)
configure_file(platform/linux/desktop/icon_files.h.in platform/linux/desktop/icon_files.h @ONLY)
file(GLOB desktop_sources CONFIGURE_DEPENDS platform/linux/desktop/*.cpp)
add_library(quillery_linux_desktop STATIC ${desktop_sources})
target_link_libraries(quillery_linux_desktop PUBLIC quillery_linux Qt6::Core Qt6::Widgets
                                             PRIVATE PkgConfig::SYSTEMD PkgConfig::XCB Qt6::DBus Qt6::Svg)

# The icons where an installed program has them; in the build tree, too, for the programs that run there.
set(icon_folder ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES packaging/icons/quillery.svg DESTINATION ${icon_folder}/scalable/apps
        RENAME ${QUILLERY_BUNDLE_IDENTIFIER}.svg)
install(FILES packaging/icons/quillery-symbolic.svg DESTINATION ${icon_folder}/symbolic/apps
        RENAME ${QUILLERY_BUNDLE_IDENTIFIER}-symbolic.svg)
configure_file(packaging/icons/quillery.svg share/icons/hicolor/scalable/apps/${QUILLERY_BUNDLE_IDENTIFIER}.svg
               COPYONLY)

# What answers for /bin/launchctl, a program of its own.
add_executable(quillery-launchctl platform/linux/launchctl_main.cpp)
target_link_libraries(quillery-launchctl PRIVATE quillery_linux)
install(TARGETS quillery-launchctl DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/quillery)

add_library(quillery_native ALIAS quillery_linux)
add_library(quillery_native_desktop ALIAS quillery_linux_desktop)
