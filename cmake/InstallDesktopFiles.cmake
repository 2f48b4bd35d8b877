# Run by `cmake --install`: the desktop entry and the bus service name the program by its full path, which is known
# no earlier, since the prefix may be told there.
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX NORMALIZE OUTPUT_VARIABLE prefix)
cmake_path(APPEND prefix "${ORBITLEDGE_BINDIR}" OUTPUT_VARIABLE CMAKE_INSTALL_FULL_BINDIR)
if(CMAKE_INSTALL_FULL_BINDIR MATCHES "[\"`$%\\\\]")
    message(FATAL_ERROR "A desktop entry cannot start a program in \"${CMAKE_INSTALL_FULL_BINDIR}\"; choose a "
        "prefix without quotation marks, dollar and percent signs, and backslashes.")
endif()
foreach(file IN ITEMS "applications/${ORBITLEDGE_ID}.desktop" "dbus-1/services/${ORBITLEDGE_ID}.service")
    cmake_path(GET file FILENAME name)
    cmake_path(GET file PARENT_PATH folder)
    file(GLOB_RECURSE template "${ORBITLEDGE_DATA}/${name}.in")
    configure_file("${template}" "${ORBITLEDGE_BUILD}/install/${name}" @ONLY)
    cmake_path(APPEND CMAKE_INSTALL_PREFIX "${ORBITLEDGE_DATADIR}" "${folder}" OUTPUT_VARIABLE destination)
    file(INSTALL "${ORBITLEDGE_BUILD}/install/${name}" DESTINATION "${destination}")
endforeach()
