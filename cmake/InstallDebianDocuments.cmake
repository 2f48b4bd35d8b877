# Run while a Debian package is made: the documents that its policy wants, compressed without the time of day, so
# that the same sources give the same package.
find_program(gzip gzip REQUIRED)

# orbitledge_compressed(<file> <path below the prefix>)
function(orbitledge_compressed file path)
    cmake_path(GET path FILENAME name)
    cmake_path(GET path PARENT_PATH folder)
    execute_process(COMMAND "${gzip}" -9nc "${file}" OUTPUT_FILE "${ORBITLEDGE_BUILD}/install/${name}"
        COMMAND_ERROR_IS_FATAL ANY)
    file(INSTALL "${ORBITLEDGE_BUILD}/install/${name}" DESTINATION "${CMAKE_INSTALL_PREFIX}/${folder}")
endfunction()

# The time is that of SOURCE_DATE_EPOCH, where that is set.
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE "${ORBITLEDGE_BUILD}/install/changelog.Debian"
"orbitledge (${ORBITLEDGE_VERSION}) bookworm; urgency=medium

  * Made from the sources of this version; changelog.gz tells what changed.

 -- ${ORBITLEDGE_MAINTAINER}  ${now}
")
file(MAKE_DIRECTORY "${ORBITLEDGE_BUILD}/install")
orbitledge_compressed("${ORBITLEDGE_BUILD}/install/changelog.Debian" share/doc/orbitledge/changelog.Debian.gz)
orbitledge_compressed("${ORBITLEDGE_SOURCE}/CHANGELOG.md" share/doc/orbitledge/changelog.gz)
orbitledge_compressed("${ORBITLEDGE_SOURCE}/data/man/orbitledge.1" share/man/man1/orbitledge.1.gz)
