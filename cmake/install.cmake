# What "cmake --install" puts where, and the archives that "cpack" makes of it.
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DOCDIR share/doc/deviceid)

install(TARGETS deviceid EXPORT deviceid-targets RUNTIME DESTINATION bin LIBRARY DESTINATION lib
        ARCHIVE DESTINATION lib)
install(TARGETS deviceid_program RUNTIME DESTINATION bin)
install(FILES ${PROJECT_SOURCE_DIR}/include/deviceid.h DESTINATION include)
install(FILES CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN *.1 EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN CMakeLists.txt EXCLUDE)

# find_package(deviceid) gives deviceid::deviceid.
set(package_folder lib/cmake/deviceid)
# The file of the targets includes whatever has its name for a beginning, and the version's has that of
# the package.
install(EXPORT deviceid-targets NAMESPACE deviceid:: DESTINATION ${package_folder})
file(CONFIGURE OUTPUT deviceid-config.cmake
     CONTENT "include(\${CMAKE_CURRENT_LIST_DIR}/deviceid-targets.cmake)\n" @ONLY)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/deviceid-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/deviceid-config.cmake
              ${PROJECT_BINARY_DIR}/deviceid-config-version.cmake DESTINATION ${package_folder})

if(NOT WIN32)
  configure_file(cmake/deviceid.pc.in ${PROJECT_BINARY_DIR}/deviceid.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/deviceid.pc DESTINATION lib/pkgconfig)
  install(FILES docs/deviceid.1 DESTINATION share/man/man1)
endif()

set(CPACK_PACKAGE_VENDOR deviceid)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Stable id of a PC, for licences and support cases")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/repack.cmake)
if(WIN32)
  # The linker has stripped them already: strip would put the present time into them.
  set(CPACK_GENERATOR ZIP)
  set(CPACK_SYSTEM_NAME windows-${CMAKE_SYSTEM_PROCESSOR})
else()
  set(CPACK_GENERATOR TGZ DEB)
  set(CPACK_STRIP_FILES ON)
  set(CPACK_SYSTEM_NAME linux-${CMAKE_SYSTEM_PROCESSOR})
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The deviceid developers <deviceid@localhost>")
  set(CPACK_DEBIAN_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
endif()
include(CPack)
