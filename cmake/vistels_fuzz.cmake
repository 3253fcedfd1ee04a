# SPDX-License-Identifier: GPL-3.0-or-later
# tests/fuzz/NAME.cpp -> fuzz target NAME; its seed inputs are tests/fuzz/seeds/NAME/.
# scripts/run_fuzz_targets runs them all.

# What reads files and texts from outside stands in these folders.
get_property(folders GLOBAL PROPERTY vistels_folders)
list(FILTER folders INCLUDE REGEX "^(util|timeline|formula|logger)$")
list(TRANSFORM folders PREPEND vistels_)

add_custom_target(fuzz_targets)

file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/fuzz/*.cpp")
foreach(source IN LISTS sources)
    get_filename_component(name "${source}" NAME_WE)
    add_executable(${name} "${source}")
    add_dependencies(fuzz_targets ${name})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/fuzz")
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_libraries(${name} PRIVATE ${folders})
endforeach()
