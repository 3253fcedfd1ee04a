# SPDX-License-Identifier: GPL-3.0-or-later
# Libraries from outside, each at the one folder that may use it (docs/dependencies.md).

find_package(EXPAT REQUIRED)
pkg_check_modules(vistels_simdjson REQUIRED IMPORTED_TARGET simdjson)
pkg_check_modules(vistels_uuid REQUIRED IMPORTED_TARGET uuid)
pkg_check_modules(vistels_xxhash REQUIRED IMPORTED_TARGET libxxhash)
vistels_link(util EXPAT::EXPAT PkgConfig::vistels_simdjson PkgConfig::vistels_uuid
             PkgConfig::vistels_xxhash)

# VISTELS_HAVE_MEDIA (0 or 1) is known to media and to what links it. The folders below are compiled alike
# with and without media, so that a compiler cache serves both.
vistels_define(media VISTELS_HAVE_MEDIA=$<BOOL:${VISTELS_MEDIA}>)
if(VISTELS_MEDIA)
    pkg_check_modules(vistels_ffmpeg REQUIRED IMPORTED_TARGET
                      libavformat libavcodec libavfilter libswscale libswresample libavutil)
    pkg_check_modules(vistels_gstreamer REQUIRED IMPORTED_TARGET gstreamer-1.0 gstreamer-app-1.0)
    find_library(VISTELS_LIBYUV yuv REQUIRED)
    mark_as_advanced(VISTELS_LIBYUV)
    vistels_link(media PkgConfig::vistels_ffmpeg PkgConfig::vistels_gstreamer ${VISTELS_LIBYUV})

    pkg_check_modules(vistels_cairo REQUIRED IMPORTED_TARGET cairo)
    vistels_link(demo PkgConfig::vistels_cairo)
endif()

if(TARGET vistels_cli)
    find_path(VISTELS_CLI11_INCLUDE CLI/CLI.hpp REQUIRED)
    mark_as_advanced(VISTELS_CLI11_INCLUDE)
endif()

if(VISTELS_SHELL)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus Gui Widgets Svg)
    pkg_check_modules(vistels_x REQUIRED IMPORTED_TARGET xcb)
    vistels_link(shell Qt6::Core Qt6::DBus Qt6::Gui Qt6::Widgets Qt6::Svg PkgConfig::vistels_x)
    # util/signal.h has a member called emit.
    vistels_define(shell QT_NO_KEYWORDS)
    if(TARGET vistels_shell)
        get_target_property(kind vistels_shell TYPE)
        if(NOT kind STREQUAL "INTERFACE_LIBRARY")
            set_target_properties(vistels_shell PROPERTIES AUTOMOC ON)
            file(GLOB icons CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/data/icons/*.svg")
            if(icons)
                qt_add_resources(vistels_shell vistels_icons PREFIX "/icons"
                                 BASE "${CMAKE_SOURCE_DIR}/data/icons" FILES ${icons})
            endif()
            # The application's own icon: :/application/io.vistels.Vistels.svg
            qt_add_resources(vistels_shell vistels_application_icon PREFIX "/application"
                             BASE "${CMAKE_SOURCE_DIR}/data"
                             FILES "${CMAKE_SOURCE_DIR}/data/io.vistels.Vistels.svg")
        endif()
    endif()
endif()
