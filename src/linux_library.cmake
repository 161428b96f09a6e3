# The shared library for Linux. It brings its C++ runtime along, so that it runs beside any other, and
# shows its hosts nothing else than what they may call.
list(JOIN exports ";\n    " exports)
file(CONFIGURE OUTPUT exports.map @ONLY
     CONTENT "{\n  global:\n    ${exports};\n  local:\n    *;\n};\n")
set_property(TARGET deviceid APPEND PROPERTY LINK_DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/exports.map)
set_target_properties(deviceid PROPERTIES VERSION ${PROJECT_VERSION}
                                          SOVERSION ${PROJECT_VERSION_MAJOR})
# Hidden visibility does not reach the standard library's templates; the version script does.
target_link_options(deviceid PRIVATE
  -Wl,--version-script=${CMAKE_CURRENT_BINARY_DIR}/exports.map,--gc-sections,--as-needed,-O1)

# With the initial-exec model, thread-local variables need no call of the dynamic linker, and LeakSanitizer
# does not look at those of an unloaded library.
foreach(target deviceid deviceid_objects)
  target_compile_options(${target} PRIVATE -ftls-model=initial-exec)
endforeach()

# Sanitizers have a runtime of their own, which they share with the program.
get_directory_property(options COMPILE_OPTIONS)
if(NOT "${CMAKE_CXX_FLAGS};${options}" MATCHES "-fsanitize=")
  target_sources(deviceid PRIVATE platform/linux/compiler_runtime.cc)
  target_link_options(deviceid PRIVATE -static-libstdc++ -static-libgcc -Wl,--no-undefined)
endif()
