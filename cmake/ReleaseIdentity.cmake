# What this build says it is, and where it asks for newer ones. Checked here, since it ends up in sources and packages.

set(ORBITLEDGE_BUILD_NUMBER "1" CACHE STRING "Rises with every release; decides which of two is newer")
set(ORBITLEDGE_RELEASE_MANIFEST_URL "" CACHE STRING
    "Where the newest release is announced, if not in the usual place of the release host (https)")
set(ORBITLEDGE_HOMEPAGE_URL "https://orbitledge.example/" CACHE STRING
    "Where the program is presented, with the pictures of docs/images below it (https, with a slash at the end)")
set(ORBITLEDGE_MAINTAINER "Orbitledge maintainers <maintainers@orbitledge.example>" CACHE STRING
    "Who answers for packages: a name and an address in angle brackets")

if(NOT ORBITLEDGE_BUILD_NUMBER MATCHES "^(0|[1-9][0-9]*)$")
    message(FATAL_ERROR
        "ORBITLEDGE_BUILD_NUMBER must be a whole number, but is \"${ORBITLEDGE_BUILD_NUMBER}\".")
endif()
if(NOT ORBITLEDGE_RELEASE_MANIFEST_URL MATCHES "^(https://[^/?#\\\\\" ][^\\\\\" ]*)?$")
    message(FATAL_ERROR
        "ORBITLEDGE_RELEASE_MANIFEST_URL must begin with https:// and a host, but is \"${ORBITLEDGE_RELEASE_MANIFEST_URL}\".")
endif()
if(NOT ORBITLEDGE_HOMEPAGE_URL MATCHES "^https://[^/?#\\\\\"<>& ][^?#\\\\\"<>& ]*/$")
    message(FATAL_ERROR
        "ORBITLEDGE_HOMEPAGE_URL must begin with https:// and a host, and end in a slash, but is \"${ORBITLEDGE_HOMEPAGE_URL}\".")
endif()
if(NOT ORBITLEDGE_MAINTAINER MATCHES "^[^<>\n;]+ <[^<>@ \n;]+@[^<>@ \n;]+>$")
    message(FATAL_ERROR
        "ORBITLEDGE_MAINTAINER must be a name and an address in angle brackets, but is \"${ORBITLEDGE_MAINTAINER}\".")
endif()
