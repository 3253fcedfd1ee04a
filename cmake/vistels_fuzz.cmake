# SPDX-License-Identifier: GPL-3.0-or-later
# tests/fuzz/NAME.cpp -> fuzz target NAME; its seed inputs are tests/fuzz/seeds/NAME/.
# scripts/run_fuzz_targets runs them all.

get_property(folders GLOBAL PROPERTY vistels_folders)
list(REMOVE_ITEM folders shell cli demo)
list(TRANSFORM folders PREPEND vistels_)

file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/fuzz/*.cpp")
foreach(source IN LISTS sources)
    get_filename_component(name "${source}" NAME_WE)
    add_executable(${name} "${source}")
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/fuzz")
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_libraries(${name} PRIVATE ${folders})
endforeach()
