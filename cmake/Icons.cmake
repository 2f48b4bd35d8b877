# The application's icon, in every size that menus and task bars ask for. The small ones have masters of their own,
# whose lines lie on whole pixels; that of 24 pixels is that of 22 with a margin of one.
find_program(ORBITLEDGE_RSVG_CONVERT rsvg-convert REQUIRED)

set(icons "${PROJECT_SOURCE_DIR}/data/icons/${ORBITLEDGE_APPLICATION_ID}")
set(theme "${CMAKE_INSTALL_DATADIR}/icons/hicolor")
set(pictures "")

# orbitledge_icon(<pixels> <master> [<option of rsvg-convert>...])
function(orbitledge_icon pixels master)
    set(picture "${PROJECT_BINARY_DIR}/icons/${pixels}x${pixels}.png")
    add_custom_command(OUTPUT "${picture}"
        COMMAND "${ORBITLEDGE_RSVG_CONVERT}" ${ARGN} --output "${picture}" "${master}"
        DEPENDS "${master}" VERBATIM)
    install(FILES "${picture}" DESTINATION "${theme}/${pixels}x${pixels}/apps"
        RENAME "${ORBITLEDGE_APPLICATION_ID}.png")
    set(pictures "${pictures}" "${picture}" PARENT_SCOPE)
endfunction()

file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/icons")
orbitledge_icon(16 "${icons}-16.svg")
orbitledge_icon(22 "${icons}-22.svg")
orbitledge_icon(24 "${icons}-22.svg" --page-width 24 --page-height 24 --left 1 --top 1)
foreach(pixels 32 48 64 128 256 512)
    orbitledge_icon(${pixels} "${icons}.svg" --width ${pixels} --height ${pixels})
endforeach()
add_custom_target(icons ALL DEPENDS ${pictures})

install(FILES "${icons}.svg" DESTINATION "${theme}/scalable/apps")
install(FILES "${icons}-symbolic.svg" DESTINATION "${theme}/symbolic/apps")
