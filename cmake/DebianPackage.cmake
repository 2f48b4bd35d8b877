# `cpack` in the build folder makes a package for Debian 12; scripts/package does all of it.

# The build number decides which of two releases is newer, for the program as for the package. The rest tells which
# Debian it was built for, and lets a package of Debian's own with the same number take its place.
set(CPACK_DEBIAN_PACKAGE_RELEASE "${ORBITLEDGE_BUILD_NUMBER}~deb12")

# Installed into the package only.
install(FILES data/completions/_orbitledge DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions"
    COMPONENT debian EXCLUDE_FROM_ALL)
configure_file(packaging/debian/copyright.in "${PROJECT_BINARY_DIR}/install/copyright" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/install/copyright" DESTINATION "${ORBITLEDGE_DOCDIR}" COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES packaging/debian/lintian-overrides DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides"
    RENAME orbitledge COMPONENT debian EXCLUDE_FROM_ALL)
install(CODE "
    set(ORBITLEDGE_SOURCE [[${PROJECT_SOURCE_DIR}]])
    set(ORBITLEDGE_BUILD [[${PROJECT_BINARY_DIR}]])
    set(ORBITLEDGE_VERSION [[${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}]])
    set(ORBITLEDGE_MAINTAINER [[${ORBITLEDGE_MAINTAINER}]])
    include([[${PROJECT_SOURCE_DIR}/cmake/InstallDebianDocuments.cmake]])"
    COMPONENT debian EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
set(CPACK_PACKAGE_NAME orbitledge)
set(CPACK_PACKAGE_CONTACT "${ORBITLEDGE_MAINTAINER}")
# One package, of the parts that belong to it.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_COMPONENTS_ALL Unspecified debian)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${ORBITLEDGE_HOMEPAGE_URL}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "tray client for a list of recurring subscriptions")
set(CPACK_PACKAGE_DESCRIPTION
"Orbitledge tells what recurring subscriptions are about to charge. It is a
client of a web service on which the list is kept: name, cost, cycle and next
renewal.

A click on its icon in the tray opens a panel with the total of the month, what
is left to charge, the week and the coming renewals. It reminds a chosen number
of days ahead, also while it does not run, and shows the same on the command
line, as a table, as JSON, or as a line for status bars.")

set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What is loaded while it runs, which no list of linked libraries tells: HTTP, readers of WebP
# pictures, zones and certificates, and the folder structure of icons.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "libcurl4, qt6-image-formats-plugins, tzdata, ca-certificates, hicolor-icon-theme")
# A keyring for the session, something that shows reminders, something that opens pages, a bus, and windows on Wayland.
# The first of each is what apt brings where there is none, so that is a small one and not a whole desktop; and one that
# the bus can start, as it cannot what the package notification-daemon brings.
string(CONCAT CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "gnome-keyring | kwalletmanager | keepassxc, "
    "dunst | notification-daemon | plasma-workspace | gnome-shell, "
    "xdg-utils, "
    "default-dbus-session-bus | dbus-session-bus, "
    "qt6-wayland")
# It tells whether the desktop is light or dark.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "xdg-desktop-portal")

include(CPack)
