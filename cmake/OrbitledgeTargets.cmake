# orbitledge_library(<folder> SOURCES <files> LINKS <targets>)
#
# One static library per folder of src/. LINKS is the folder's whole right to include others: a
# folder that is not named there does not link, which keeps the arrows of docs/architecture.md true.
function(orbitledge_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS;PRIVATE_LINKS")
    add_library(orbitledge_${name} STATIC ${arg_SOURCES})
    add_library(orbitledge::${name} ALIAS orbitledge_${name})
    target_include_directories(orbitledge_${name} PUBLIC "${CMAKE_SOURCE_DIR}/src")
    target_link_libraries(orbitledge_${name}
        PUBLIC ${arg_LINKS}
        PRIVATE orbitledge_settings ${arg_PRIVATE_LINKS})
endfunction()
