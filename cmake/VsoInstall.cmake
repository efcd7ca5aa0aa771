# Headers, libraries, schema files, the CMake package and vso.pc; the program, its examples and its completion.

include(CMakePackageConfigHelpers)

get_property(libraries GLOBAL PROPERTY VSO_EXPORTED_LIBRARIES)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vso)

install(
  TARGETS ${libraries}
  EXPORT vsoTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vsoTargets NAMESPACE vso:: DESTINATION ${package_dir})

install(DIRECTORY ${PROJECT_SOURCE_DIR}/vso DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h"
                                                                                    PATTERN "*.proto")
install(DIRECTORY ${PROJECT_BINARY_DIR}/generated/vso DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING
                                                                                      PATTERN "*.pb.h")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vsoConfig.cmake.in ${PROJECT_BINARY_DIR}/vsoConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vsoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vsoConfig.cmake ${PROJECT_BINARY_DIR}/vsoConfigVersion.cmake
        DESTINATION ${package_dir})

# pkg-config has no notion of targets: name the platform libraries behind vso in link order.
list(TRANSFORM libraries PREPEND "-l" OUTPUT_VARIABLE pc_libs)
list(REVERSE pc_libs)
list(JOIN pc_libs " " VSO_PC_LIBS)
# From the folder of vso.pc, so that the installed tree may be moved.
file(RELATIVE_PATH VSO_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${CMAKE_CURRENT_LIST_DIR}/vso.pc.in ${PROJECT_BINARY_DIR}/vso.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vso.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET vso_app)
  install(TARGETS vso_app RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/apps/vso/examples DESTINATION ${CMAKE_INSTALL_DATADIR}/vso)
  install(FILES ${PROJECT_SOURCE_DIR}/apps/vso/completion/vso.bash
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME vso)
endif()

set(CPACK_PACKAGE_CONTACT "libvso maintainers <libvso@localhost>")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
include(CPack)
