# The desktop layer of Linux on Qt: windows, menus, the tray and the event loop. The companion does not link it.
find_package(Qt6 REQUIRED COMPONENTS Core DBus Network Svg Widgets)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)
file(READ packaging/icons/quillery.svg QUILLERY_ICON)
file(READ packaging/icons/quillery-symbolic.svg QUILLERY_SYMBOLIC_ICON)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS packaging/icons/quillery.svg
                                       packaging/icons/quillery-symbolic.svg)
configure_file(platform/qt/icon_files.h.in platform/qt/icon_files.h @ONLY)
file(GLOB qt_sources CONFIGURE_DEPENDS platform/qt/*.cpp)
add_library(quillery_qt STATIC ${qt_sources})
target_link_libraries(quillery_qt PUBLIC quillery_linux_updates Qt6::Core Qt6::Widgets
                                  PRIVATE PkgConfig::XCB Qt6::DBus Qt6::Network Qt6::Svg)

# The icons in their installed places, and in the same place in the build tree for programs that run there.
set(icon_folder ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES packaging/icons/quillery.svg DESTINATION ${icon_folder}/scalable/apps
        RENAME ${QUILLERY_BUNDLE_IDENTIFIER}.svg)
install(FILES packaging/icons/quillery-symbolic.svg DESTINATION ${icon_folder}/symbolic/apps
        RENAME ${QUILLERY_BUNDLE_IDENTIFIER}-symbolic.svg)
configure_file(packaging/icons/quillery.svg share/icons/hicolor/scalable/apps/${QUILLERY_BUNDLE_IDENTIFIER}.svg
               COPYONLY)

add_library(quillery_native_desktop ALIAS quillery_qt)
