# SPDX-License-Identifier: GPL-3.0-or-later
# tests/<folder>/*.cpp    -> one GoogleTest program test_<folder>, linked to that folder's library
# tests/input/*.cpp       -> test_input, linked to the shell: real keys and mouse, on an X server of its own
# tests/cli/*_test.py     -> run with the path of vistels-cli in VISTELS_CLI
# tests/structure/*_test.py -> run on the sources
#
# Golden files are found under VISTELS_GOLDEN_FOLDER, helpers are included as "support/name.h".

find_package(GTest REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
include(GoogleTest)

set(test_root "${CMAKE_SOURCE_DIR}/tests")
set(test_seconds 120)
if(VISTELS_SANITIZE)
    set(test_seconds 600)
endif()
set(test_environment "LC_ALL=C.UTF-8")

# vistels_folder_tests(NAME [FOLDER]): tests/NAME, of src/FOLDER or src/NAME.
function(vistels_folder_tests name)
    set(folder ${name})
    if(ARGC GREATER 1)
        set(folder ${ARGV1})
    endif()
    file(GLOB sources CONFIGURE_DEPENDS "${test_root}/${name}/*.cpp")
    if(name STREQUAL "media" AND NOT VISTELS_MEDIA)
        list(FILTER sources INCLUDE REGEX "/(plain_[^/]*|[^/]*stub[^/]*)\\.cpp$")
    endif()
    if(NOT sources)
        return()
    endif()
    set(program test_${name})
    set(main_file "${test_root}/${name}/main.cpp")
    set(own_main OFF)
    if(main_file IN_LIST sources)
        set(own_main ON)
    endif()
    vistels_group_sources(${name} ${program} sources)
    add_executable(${program} ${sources})
    target_include_directories(${program} PRIVATE "${test_root}")
    target_compile_definitions(${program} PRIVATE VISTELS_GOLDEN_FOLDER="${test_root}/golden"
                               VISTELS_SOURCE_FOLDER="${CMAKE_SOURCE_DIR}")
    target_link_libraries(${program} PRIVATE vistels_${folder} GTest::gtest)
    if(NOT own_main)
        target_link_libraries(${program} PRIVATE GTest::gtest_main)
    endif()
    if(folder STREQUAL "shell")
        find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
        target_link_libraries(${program} PRIVATE Qt6::Test)
    endif()
    if(name STREQUAL "shell")
        # Started through an environment that holds for listing the tests as well, not for running alone.
        set_target_properties(${program} PROPERTIES AUTOMOC ON
            CROSSCOMPILING_EMULATOR "${CMAKE_COMMAND};-E;env;QT_QPA_PLATFORM=offscreen")
    endif()
    gtest_discover_tests(${program} TEST_PREFIX "${name}." DISCOVERY_MODE PRE_TEST
                         DISCOVERY_TIMEOUT 60
                         PROPERTIES TIMEOUT ${test_seconds} ENVIRONMENT ${test_environment})
endfunction()

get_property(folders GLOBAL PROPERTY vistels_folders)
foreach(folder IN LISTS folders)
    vistels_folder_tests(${folder})
endforeach()

# With sanitizers tests/shell is enough: what these add is the way from the keyboard to the program.
if(VISTELS_SHELL AND NOT VISTELS_SANITIZE)
    pkg_check_modules(vistels_xcb REQUIRED IMPORTED_TARGET xcb xcb-xtest)
    vistels_folder_tests(input shell)
    target_link_libraries(test_input PRIVATE PkgConfig::vistels_xcb)
endif()

# vistels_script_tests(FOLDER variable=value...)
function(vistels_script_tests folder)
    file(GLOB scripts CONFIGURE_DEPENDS "${test_root}/${folder}/*_test.py")
    foreach(script IN LISTS scripts)
        get_filename_component(stem "${script}" NAME_WE)
        add_test(NAME ${folder}.${stem} COMMAND Python3::Interpreter -B "${script}")
        set_tests_properties(${folder}.${stem} PROPERTIES TIMEOUT 300
                             ENVIRONMENT "${test_environment};${ARGN}")
    endforeach()
endfunction()

vistels_script_tests(structure)
if(TARGET vistels-cli)
    if(VISTELS_MEDIA)
        set(have_media 1)
    else()
        set(have_media 0)
    endif()
    vistels_script_tests(cli "VISTELS_CLI=$<TARGET_FILE:vistels-cli>" "VISTELS_HAVE_MEDIA=${have_media}"
                         "VISTELS_GOLDEN_FOLDER=${test_root}/golden")
endif()
