# The Debian package: cmake --build --preset release --target deb
set(TARNLY_PACKAGE_RELEASE 1 CACHE STRING "The Debian package's release, with the system that it is for")
set(CPACK_GENERATOR DEB)
set(CPACK_SOURCE_GENERATOR "")
set(CPACK_PACKAGE_NAME tarnly)
set(CPACK_PACKAGE_VENDOR "The Tarnly developers")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/complete-tree.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${TARNLY_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Tarnly developers <tarnly@example.org>")
set(CPACK_DEBIAN_PACKAGE_SECTION education)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "flight-training companion of the X-Plane flight simulator")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "\
Tarnly runs beside the X-Plane flight simulator and connects it with a
flight-training application on a phone or tablet. The application finds it
on the local network, and through it reads and writes datarefs, runs
commands, moves the aircraft, loads saved situations, follows scripts of
triggers, and records the flight.
.
The package has an application in the tray (tarnly), the same without a
window (tarnlyd), a client on the command line (tarnly-client), a tool for
navigation data (tarnly-navdb), a stand-in for the simulator (tarnly-sim), and
what looks at recordings and exports them (tarnly-track).")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Without the daemon it serves clients that are told the address; without the plugin Qt falls back to X11, and without
# the translations its own few texts, such as those of file dialogs, to English.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "avahi-daemon, qt6-wayland, qt6-translations-l10n")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS
    "qt6-gtk-platformtheme, gnome-shell-extension-appindicator, bash-completion")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)

add_custom_target(deb
    COMMAND ${CMAKE_CPACK_COMMAND} --config ${PROJECT_BINARY_DIR}/CPackConfig.cmake
    DEPENDS ${TARNLY_PROGRAMS}
    USES_TERMINAL)
