# SPDX-License-Identifier: GPL-3.0-or-later
include(GNUInstallDirs)

foreach(program vistels vistels-cli)
    if(TARGET ${program})
        install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    endif()
endforeach()
if(TARGET vistels)
    install(FILES "${CMAKE_SOURCE_DIR}/data/vistels.desktop"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/applications"
            RENAME io.vistels.Vistels.desktop)
    install(FILES "${CMAKE_SOURCE_DIR}/data/io.vistels.Vistels.metainfo.xml"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
    install(FILES "${CMAKE_SOURCE_DIR}/data/io.vistels.Vistels.svg"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps" OPTIONAL)
endif()
