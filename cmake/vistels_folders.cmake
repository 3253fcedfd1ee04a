# SPDX-License-Identifier: GPL-3.0-or-later
# vistels_folder(NAME [PROGRAM program] [LINKS folder...])
#
# Makes the library vistels_NAME from src/NAME and, when src/NAME/main.cpp exists,
# the program from that file. A folder without sources becomes an interface library
# (headers only), a folder that is not there yet is left out, and so is a link to it.

function(vistels_folder name)
    cmake_parse_arguments(PARSE_ARGV 1 folder "" "PROGRAM" "LINKS")
    set(root "${CMAKE_SOURCE_DIR}/src/${name}")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${root}/*.cpp")
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${root}/*.h")
    if(NOT sources AND NOT headers)
        message(STATUS "src/${name}: nothing there, left out")
        return()
    endif()

    set(main_file "")
    if("${root}/main.cpp" IN_LIST sources)
        set(main_file "${root}/main.cpp")
        list(REMOVE_ITEM sources "${main_file}")
    endif()
    if(name STREQUAL "media")
        vistels_choose_media_sources(sources)
    endif()

    set(linked vistels_options)
    foreach(other IN LISTS folder_LINKS)
        if(TARGET vistels_${other})
            list(APPEND linked vistels_${other})
        endif()
    endforeach()

    set(library vistels_${name})
    if(sources)
        vistels_group_sources(${name} ${library} sources)
        add_library(${library} STATIC ${sources} ${headers})
        target_link_libraries(${library} PUBLIC ${linked})
    else()
        add_library(${library} INTERFACE)
        target_link_libraries(${library} INTERFACE ${linked})
    endif()
    set_property(GLOBAL APPEND PROPERTY vistels_folders ${name})

    if(main_file AND folder_PROGRAM)
        add_executable(${folder_PROGRAM} "${main_file}")
        target_link_libraries(${folder_PROGRAM} PRIVATE ${library})
    endif()
endfunction()

# With media: everything but the stubs. Without: the stubs, and the sources that need
# neither FFmpeg nor GStreamer (named plain_*.cpp).
function(vistels_choose_media_sources list_name)
    set(chosen ${${list_name}})
    if(VISTELS_MEDIA)
        list(FILTER chosen EXCLUDE REGEX "/[^/]*_stub\\.cpp$")
    else()
        list(FILTER chosen INCLUDE REGEX "/([^/]*_stub|plain_[^/]*)\\.cpp$")
    endif()
    set(${list_name} ${chosen} PARENT_SCOPE)
endfunction()

# How a folder's library hands things on to those who link it: "INTERFACE" when it has headers only.
function(vistels_scope_of name result_name)
    get_target_property(kind vistels_${name} TYPE)
    if(kind STREQUAL "INTERFACE_LIBRARY")
        set(${result_name} INTERFACE PARENT_SCOPE)
    else()
        set(${result_name} PUBLIC PARENT_SCOPE)
    endif()
endfunction()

# vistels_link(FOLDER target...) and vistels_define(FOLDER definition...): for a folder and all above it;
# nothing happens for a folder that is not there.
function(vistels_link name)
    if(TARGET vistels_${name})
        vistels_scope_of(${name} scope)
        target_link_libraries(vistels_${name} ${scope} ${ARGN})
    endif()
endfunction()

function(vistels_define name)
    if(TARGET vistels_${name})
        vistels_scope_of(${name} scope)
        target_compile_definitions(vistels_${name} ${scope} ${ARGN})
    endif()
endfunction()
