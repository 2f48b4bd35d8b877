# orbitledge_library(<folder> SOURCES <files> LINKS <targets>)
#
# One static library per folder of src/. Each has an include root of its own, which holds nothing but that
# folder, so LINKS is a folder's whole right to include others: what is not named there, or linked by what
# is, is not found. That keeps the arrows of docs/architecture.md true.
function(orbitledge_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "FOLDER" "SOURCES;LINKS;PRIVATE_LINKS")
    if(NOT arg_FOLDER)
        set(arg_FOLDER ${name})
    endif()
    set(root "${PROJECT_BINARY_DIR}/include/${name}")
    file(REMOVE_RECURSE "${root}")
    file(MAKE_DIRECTORY "${root}/${arg_FOLDER}")
    # Links to the entries and not to the folder: a folder inside one may be a library of its own.
    file(GLOB entries CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}/src/${arg_FOLDER}"
        "${PROJECT_SOURCE_DIR}/src/${arg_FOLDER}/*.h" "${PROJECT_SOURCE_DIR}/src/${arg_FOLDER}/json")
    foreach(entry IN LISTS entries)
        file(CREATE_LINK "${PROJECT_SOURCE_DIR}/src/${arg_FOLDER}/${entry}" "${root}/${arg_FOLDER}/${entry}"
            SYMBOLIC)
    endforeach()
    add_library(orbitledge_${name} STATIC ${arg_SOURCES})
    add_library(orbitledge::${name} ALIAS orbitledge_${name})
    target_include_directories(orbitledge_${name} PUBLIC "${root}")
    target_link_libraries(orbitledge_${name}
        PUBLIC ${arg_LINKS}
        PRIVATE orbitledge_settings ${arg_PRIVATE_LINKS})
endfunction()
