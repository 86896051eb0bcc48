# The files and places of `cmake --install`, and the package that find_package(tolvik) finds.
#
# A room that others may link is installed as a static library, tolvik::ROOM. Its public headers are in
# include/tolvik/, where programs and other rooms find them under one name, installed or not: <tolvik/state_file.h>.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# tolvik_install_rooms(SET room...): installs the rooms as tolvik::ROOM, described by tolvikSET.cmake.
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tolvik)
function(tolvik_install_rooms set)
  list(TRANSFORM ARGN PREPEND tolvik_ OUTPUT_VARIABLE targets)
  foreach(room ${ARGN})
    set_target_properties(tolvik_${room} PROPERTIES EXPORT_NAME ${room})
  endforeach()
  install(TARGETS ${targets} EXPORT tolvik${set} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
          INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endfunction()

# The set Targets needs nothing but Tolvik. The component analysis also needs the libraries that the rooms below it link.
install(TARGETS Tolvik tolvik EXPORT tolvikTargets INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
tolvik_install_rooms(Targets model optics)
set(sets Targets)
if(TARGET tolvik_analysis)
  tolvik_install_rooms(Analysis analysis fit engine script levmar)
  list(APPEND sets Analysis)
endif()
foreach(set ${sets})
  install(EXPORT tolvik${set} NAMESPACE tolvik:: FILE tolvik${set}.cmake DESTINATION ${package_folder})
endforeach()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tolvik DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/man/Tolvik.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tolvikConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/tolvikConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tolvikConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tolvikConfig.cmake ${PROJECT_BINARY_DIR}/tolvikConfigVersion.cmake
        DESTINATION ${package_folder})

# Relative to its own place, so that the installed tree can be moved.
file(RELATIVE_PATH pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/tolvik.pc.in ${PROJECT_BINARY_DIR}/tolvik.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tolvik.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
