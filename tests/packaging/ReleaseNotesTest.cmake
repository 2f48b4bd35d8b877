# cmake -DSOURCE=... -P: what software centres are told is what CHANGELOG.md says.
include("${SOURCE}/cmake/ReleaseNotes.cmake")

set(data "${SOURCE}/tests/packaging/data")
orbitledge_release_notes("${data}/changelog.md" actual)
file(READ "${data}/releases.xml" expected)
if(NOT actual STREQUAL expected)
    message(FATAL_ERROR "Expected:\n${expected}\nbut got:\n${actual}")
endif()
