# SPDX-License-Identifier: GPL-3.0-or-later
# bench/NAME.cpp -> program bench_NAME; bench/shell/NAME.cpp -> bench_shell_NAME.
# A benchmark has its own main, takes "--short", and is run by scripts/run_benchmarks.
# The peers it compares with are libplist and libmpv, when they are installed (VISTELS_HAVE_PLIST,
# VISTELS_HAVE_MPV), and SQLite. What is one benchmark's alone and too long for its source is bench/NAME/*.h; what
# they share is bench/support, and what tests share as well tests/support; both are included as
# "support/NAME.h".

pkg_check_modules(vistels_plist IMPORTED_TARGET libplist-2.0)
pkg_check_modules(vistels_mpv IMPORTED_TARGET mpv)
pkg_check_modules(vistels_sqlite REQUIRED IMPORTED_TARGET sqlite3)

add_library(vistels_peers INTERFACE)
target_include_directories(vistels_peers INTERFACE "${CMAKE_SOURCE_DIR}/bench" "${CMAKE_SOURCE_DIR}/tests")
target_link_libraries(vistels_peers INTERFACE PkgConfig::vistels_sqlite)
if(TARGET PkgConfig::vistels_plist)
    target_link_libraries(vistels_peers INTERFACE PkgConfig::vistels_plist)
    target_compile_definitions(vistels_peers INTERFACE VISTELS_HAVE_PLIST=1)
endif()
if(TARGET PkgConfig::vistels_mpv)
    target_link_libraries(vistels_peers INTERFACE PkgConfig::vistels_mpv)
    target_compile_definitions(vistels_peers INTERFACE VISTELS_HAVE_MPV=1)
endif()

get_property(folders GLOBAL PROPERTY vistels_folders)
list(REMOVE_ITEM folders shell cli)
list(TRANSFORM folders PREPEND vistels_)

file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/bench/*.cpp")
foreach(source IN LISTS sources)
    get_filename_component(stem "${source}" NAME_WE)
    add_executable(bench_${stem} "${source}")
    target_link_libraries(bench_${stem} PRIVATE ${folders} vistels_peers)
endforeach()

if(TARGET vistels_shell)
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/bench/shell/*.cpp")
    foreach(source IN LISTS sources)
        get_filename_component(stem "${source}" NAME_WE)
        add_executable(bench_shell_${stem} "${source}")
        set_target_properties(bench_shell_${stem} PROPERTIES AUTOMOC ON)
        target_link_libraries(bench_shell_${stem} PRIVATE vistels_shell vistels_peers)
    endforeach()
endif()
