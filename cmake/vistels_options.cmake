# SPDX-License-Identifier: GPL-3.0-or-later
# What every target is compiled with: language, warnings, sanitizers, cache, version.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(VISTELS_CCACHE ccache)
    mark_as_advanced(VISTELS_CCACHE)
    if(VISTELS_CCACHE)
        # Paths below the source folder count from the build folder, so that every checkout shares the cache.
        set(launcher "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}" CCACHE_NOHASHDIR=1
            "${VISTELS_CCACHE}")
        set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
        set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
    endif()
endif()

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)

# Linked to every target of this project; never to anything outside it.
add_library(vistels_options INTERFACE)
target_include_directories(vistels_options INTERFACE "${CMAKE_SOURCE_DIR}/src")
target_link_libraries(vistels_options INTERFACE Threads::Threads)
target_compile_options(vistels_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                       $<$<BOOL:${VISTELS_WERROR}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Optimised std::string code sets this one off without cause (GCC bug 105651).
    target_compile_options(vistels_options INTERFACE -Wno-restrict)
    if(VISTELS_SANITIZE)
        # And std::variant with a sanitizer's calls in it this one (GCC bug 80635).
        target_compile_options(vistels_options INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()

if(NOT VISTELS_BUILD_NUMBER MATCHES "^[0-9]+$")
    message(FATAL_ERROR "VISTELS_BUILD_NUMBER must be a whole number, not \"${VISTELS_BUILD_NUMBER}\"")
endif()
target_compile_definitions(vistels_options INTERFACE
    VISTELS_VERSION="${PROJECT_VERSION}"
    VISTELS_BUILD_NUMBER=${VISTELS_BUILD_NUMBER})

if(VISTELS_SANITIZE)
    set(sanitize_flags "-fsanitize=${VISTELS_SANITIZE}" -fno-omit-frame-pointer)
    if(VISTELS_SANITIZE MATCHES "undefined")
        list(APPEND sanitize_flags -fno-sanitize-recover=undefined)
    endif()
    add_compile_options(${sanitize_flags})
    add_link_options(${sanitize_flags})
endif()
if(VISTELS_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "The fuzz targets need clang: use the preset \"fuzz\"")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
