# SPDX-License-Identifier: GPL-3.0-or-later
# vistels_group_sources(FOLDER TARGET LIST)
#
# Where VISTELS_GROUPS, a regular expression, fits the folder's name, the sources in LIST, which make the target, are
# replaced by few files that include them (cmake/group_sources.py). Most of the time of compiling goes into what every
# source has in common: headers, templates, inline functions. A group takes much less than its sources one by one.
# But a changed source has its whole group compiled anew, and a source finds what only its neighbours include. So this
# is for builds that are made once, beside one that compiles each source by itself.

# Groups of more would leave processors without work at the end, and take more memory each.
set(vistels_group_lines 2500)

if(VISTELS_GROUPS)
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
endif()

function(vistels_group_sources folder target list_name)
    if(NOT VISTELS_GROUPS OR NOT folder MATCHES "${VISTELS_GROUPS}" OR NOT ${list_name})
        return()
    endif()
    set(script "${CMAKE_SOURCE_DIR}/cmake/group_sources.py")
    set(sources ${${list_name}})
    # What may stand together depends on what is written in them.
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${script}" ${sources})
    execute_process(COMMAND "${Python3_EXECUTABLE}" -B "${script}" "${CMAKE_BINARY_DIR}/groups/${target}"
                            ${vistels_group_lines} ${sources}
                    OUTPUT_VARIABLE grouped OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REPLACE "\n" ";" grouped "${grouped}")
    set(${list_name} ${grouped} PARENT_SCOPE)
    list(FILTER grouped INCLUDE REGEX "/group_[0-9]+\\.cpp$")
    if(NOT grouped)
        return()
    endif()
    set(options -iquote "${CMAKE_SOURCE_DIR}")
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Members of a type from an unnamed namespace are a mistake in headers, and to GCC all that is included is one.
        # Where each source is compiled by itself the warning is on.
        list(APPEND options -Wno-subobject-linkage)
    endif()
    set_source_files_properties(${grouped} PROPERTIES COMPILE_OPTIONS "${options}")
endfunction()
