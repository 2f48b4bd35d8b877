install(TARGETS orbitledge RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
# Nobody calls it by its name: the program looks for it there.
install(TARGETS orbitledge-desktop RUNTIME DESTINATION libexec/orbitledge)
install(FILES data/man/orbitledge.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES data/completions/orbitledge.bash
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME orbitledge)
install(FILES data/completions/_orbitledge DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
install(FILES data/completions/orbitledge.fish
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
install(FILES LICENSE README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
