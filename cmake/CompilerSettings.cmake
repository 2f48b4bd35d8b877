set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(ORBITLEDGE_CCACHE ccache)
if(ORBITLEDGE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${ORBITLEDGE_CCACHE}")
endif()

# Carried by every target of ours and by nothing else.
add_library(orbitledge_settings INTERFACE)

target_compile_options(orbitledge_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
    -Wduplicated-cond)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(orbitledge_settings INTERFACE -Wno-unknown-warning-option)
else()
    # GCC 12 sees overlaps in std::string's concatenation that cannot be (its bug 105651).
    target_compile_options(orbitledge_settings INTERFACE -Wno-restrict)
endif()
if(ORBITLEDGE_WARNINGS_AS_ERRORS)
    target_compile_options(orbitledge_settings INTERFACE -Werror)
endif()

target_compile_definitions(orbitledge_settings INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
    QT_NO_FOREACH QT_NO_KEYWORDS QT_STRICT_ITERATORS
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(ORBITLEDGE_SANITIZERS)
    # UBSan's findings must end the program, or a test that hits one would still pass.
    add_compile_options(-fsanitize=${ORBITLEDGE_SANITIZERS} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ORBITLEDGE_SANITIZERS})
    if(ORBITLEDGE_SANITIZERS MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=all)
    endif()
endif()
if(ORBITLEDGE_FUZZERS)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "ORBITLEDGE_FUZZERS needs Clang; the preset fuzz selects it.")
    endif()
    # Everything reports its coverage, or the search would be blind beyond the targets themselves.
    add_compile_options(-fsanitize=fuzzer-no-link)
    add_link_options(-fsanitize=fuzzer-no-link)
endif()
if(ORBITLEDGE_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic)
    add_link_options(--coverage)
endif()

# orbitledge_counts_at_end(<target>...): for programs that tests end at once, or that turn into another one, which
# would take what they have counted along.
function(orbitledge_counts_at_end)
    if(NOT ORBITLEDGE_COVERAGE)
        return()
    endif()
    foreach(target ${ARGN})
        target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests/support/CountsAtEnd.cpp")
        target_link_options(${target} PRIVATE "LINKER:--wrap=execv")
    endforeach()
endfunction()

# Distributions pass these themselves; a plain release build gets them from here.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT ORBITLEDGE_SANITIZERS)
    add_compile_definitions(_FORTIFY_SOURCE=2)
    add_compile_options(-fstack-protector-strong)
    add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,--as-needed)
    # Code for coroutines is large, and most of it waits: half a megabyte less of what stays in memory all day is
    # worth more than its speed. What computes asks for speed itself (src/CMakeLists.txt).
    add_compile_options(-Os -ffunction-sections -fdata-sections)
    # Of coroutines that it makes small, GCC 12 says so of what is not there. Other builds are still asked.
    add_compile_options(-Wno-maybe-uninitialized)
    add_link_options(-Wl,--gc-sections)
endif()
