# What this build says it is, and where it asks for newer ones. Checked here, since both end up in sources.

set(ORBITLEDGE_BUILD_NUMBER "1" CACHE STRING "Rises with every release; decides which of two is newer")
set(ORBITLEDGE_RELEASE_MANIFEST_URL "" CACHE STRING
    "Where the newest release is announced, if not in the usual place of the release host (https)")

if(NOT ORBITLEDGE_BUILD_NUMBER MATCHES "^(0|[1-9][0-9]*)$")
    message(FATAL_ERROR
        "ORBITLEDGE_BUILD_NUMBER must be a whole number, but is \"${ORBITLEDGE_BUILD_NUMBER}\".")
endif()
if(NOT ORBITLEDGE_RELEASE_MANIFEST_URL MATCHES "^(https://[^/?#\\\\\" ][^\\\\\" ]*)?$")
    message(FATAL_ERROR
        "ORBITLEDGE_RELEASE_MANIFEST_URL must begin with https:// and a host, but is \"${ORBITLEDGE_RELEASE_MANIFEST_URL}\".")
endif()
