include(ReleaseNotes)

set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(ORBITLEDGE_DOCDIR "${CMAKE_INSTALL_DATADIR}/doc/orbitledge")

# First, since it may refuse.
install(CODE "
    set(ORBITLEDGE_ID [[${ORBITLEDGE_APPLICATION_ID}]])
    set(ORBITLEDGE_DATA [[${PROJECT_SOURCE_DIR}/data]])
    set(ORBITLEDGE_BUILD [[${PROJECT_BINARY_DIR}]])
    set(ORBITLEDGE_BINDIR [[${CMAKE_INSTALL_BINDIR}]])
    set(ORBITLEDGE_DATADIR [[${CMAKE_INSTALL_DATADIR}]])
    include([[${PROJECT_SOURCE_DIR}/cmake/InstallDesktopFiles.cmake]])")

install(TARGETS orbitledge RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
# Nobody calls them by their names: the program looks for them there.
install(TARGETS orbitledge-command orbitledge-desktop orbitledge-http RUNTIME DESTINATION libexec/orbitledge)

include(Icons)

orbitledge_release_notes("${PROJECT_SOURCE_DIR}/CHANGELOG.md" ORBITLEDGE_RELEASE_NOTES)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/CHANGELOG.md")
set(metainfo "${ORBITLEDGE_APPLICATION_ID}.metainfo.xml")
configure_file("data/${metainfo}.in" "${PROJECT_BINARY_DIR}/${metainfo}" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/${metainfo}" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")

install(FILES data/completions/orbitledge.bash
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME orbitledge)
install(FILES data/completions/orbitledge.fish
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
install(FILES README.md DESTINATION "${ORBITLEDGE_DOCDIR}")
# Debian has places and forms of its own for these.
install(FILES data/completions/_orbitledge DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions"
    COMPONENT elsewhere)
install(FILES data/man/orbitledge.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT elsewhere)
install(FILES LICENSE DESTINATION "${ORBITLEDGE_DOCDIR}" COMPONENT elsewhere)

include(DebianPackage)
