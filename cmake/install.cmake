# The install rules. The folders are those of GNUInstallDirs, and may be moved together.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# path_from(VARIABLE FOLDER OTHER): the relative path from one installed folder to another.
function(path_from variable folder other)
  cmake_path(ABSOLUTE_PATH other BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} NORMALIZE)
  cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} NORMALIZE)
  cmake_path(RELATIVE_PATH other BASE_DIRECTORY ${folder})
  set(${variable} ${other} PARENT_SCOPE)
endfunction()

install(TARGETS deviceid EXPORT deviceid-targets INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET deviceid_program)
  path_from(libraries ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_LIBDIR})
  set_property(TARGET deviceid_program PROPERTY INSTALL_RPATH $ORIGIN/${libraries})
  install(TARGETS deviceid_program)
  get_target_property(completions deviceid_program completions)
  set(shares ${CMAKE_INSTALL_DATAROOTDIR})
  if(NOT WIN32)
    install(FILES ${completions}/deviceid DESTINATION ${shares}/bash-completion/completions)
    install(FILES ${completions}/_deviceid DESTINATION ${shares}/zsh/site-functions)
  elseif(DEVICEID_COMPLETIONS)
    # Not beside the program: PowerShell would run it in place of the program.
    install(FILES ${completions}/deviceid.ps1 DESTINATION ${shares}/powershell)
  endif()
endif()
install(FILES include/deviceid.h TYPE INCLUDE)
install(FILES CHANGELOG.md TYPE DOC)
install(DIRECTORY docs/ TYPE DOC PATTERN *.1 EXCLUDE)
install(DIRECTORY examples TYPE DOC PATTERN CMakeLists.txt EXCLUDE)
# The native build makes the page for all systems.
set(DEVICEID_PAGE "" CACHE FILEPATH "A finished explain.html, for builds that make none")
if(TARGET deviceid_page)
  install(FILES ${PROJECT_BINARY_DIR}/explain.html TYPE DOC)
elseif(DEVICEID_PAGE)
  install(FILES ${DEVICEID_PAGE} TYPE DOC)
endif()

# find_package(deviceid) gives deviceid::deviceid.
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/deviceid)
# deviceid-targets.cmake includes every file deviceid-targets-*.cmake beside it. The version file's name
# begins with that of the package instead.
install(EXPORT deviceid-targets NAMESPACE deviceid:: DESTINATION ${package_folder})
file(CONFIGURE OUTPUT deviceid-config.cmake
     CONTENT "include(\${CMAKE_CURRENT_LIST_DIR}/deviceid-targets.cmake)\n" @ONLY)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/deviceid-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/deviceid-config.cmake
              ${PROJECT_BINARY_DIR}/deviceid-config-version.cmake DESTINATION ${package_folder})

if(NOT WIN32)
  set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  path_from(libraries ${pkgconfig_folder} ${CMAKE_INSTALL_LIBDIR})
  path_from(headers ${pkgconfig_folder} ${CMAKE_INSTALL_INCLUDEDIR})
  set(definition "")
  set(runtime "")
  get_target_property(kind deviceid TYPE)
  if(kind STREQUAL STATIC_LIBRARY)
    set(definition " -DDEVICEID_STATIC")
    set(runtime " -lstdc++")
  endif()
  configure_file(cmake/deviceid.pc.in deviceid.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/deviceid.pc DESTINATION ${pkgconfig_folder})
  install(FILES docs/deviceid.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

if(PROJECT_IS_TOP_LEVEL)
  include(cmake/package.cmake)
endif()
