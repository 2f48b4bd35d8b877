# orbitledge_release_notes(<changelog> <variable>)
#
# What software centres show of CHANGELOG.md: the releases in it, newest first, as the element "releases" of AppStream.
# A release is a heading with a version and a date, "## 1.2.0 - 2026-03-01", and its changes are the list entries below.
# What has no date was not released and is left out; without any release the result is empty.
function(orbitledge_release_notes changelog result)
    file(READ "${changelog}" text)
    string(REPLACE "&" "&amp;" text "${text}")
    string(REPLACE "<" "&lt;" text "${text}")
    string(REPLACE ">" "&gt;" text "${text}")
    # An entry goes on in the lines that are indented below it.
    string(REGEX REPLACE "\n[ \t]+" " " text "${text}")
    string(REGEX REPLACE "`([^`\n]*)`" "<code>\\1</code>" text "${text}")
    # Software centres show no links.
    string(REGEX REPLACE "\\[([^]\n]*)\\]\\([^)\n]*\\)" "\\1" text "${text}")
    # What would be taken for the punctuation of a list.
    string(ASCII 28 semicolon)
    string(ASCII 29 opening)
    string(ASCII 30 closing)
    string(REPLACE ";" "${semicolon}" text "${text}")
    string(REPLACE "[" "${opening}" text "${text}")
    string(REPLACE "]" "${closing}" text "${text}")
    string(REPLACE "\n" ";" lines "${text}")

    set(releases "")
    set(entries "")
    set(heading "")
    foreach(line IN LISTS lines ITEMS "## end")
        if(line MATCHES "^## ")
            if(heading AND entries)
                string(APPEND releases "    <release ${heading}>\n      <description>\n        <ul>\n${entries}"
                    "        </ul>\n      </description>\n    </release>\n")
            elseif(heading)
                string(APPEND releases "    <release ${heading}/>\n")
            endif()
            set(entries "")
            set(heading "")
            if(line MATCHES "^## ${opening}?([0-9][^ ${closing}]*)${closing}? - ([0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9])$")
                set(heading "version=\"${CMAKE_MATCH_1}\" date=\"${CMAKE_MATCH_2}\"")
            endif()
        elseif(line MATCHES "^- (.*)$")
            string(APPEND entries "          <li>${CMAKE_MATCH_1}</li>\n")
        endif()
    endforeach()

    if(releases)
        set(releases "  <releases>\n${releases}  </releases>\n")
    endif()
    string(REPLACE "${semicolon}" ";" releases "${releases}")
    string(REPLACE "${opening}" "[" releases "${releases}")
    string(REPLACE "${closing}" "]" releases "${releases}")
    set(${result} "${releases}" PARENT_SCOPE)
endfunction()
