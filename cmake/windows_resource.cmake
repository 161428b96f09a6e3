# windows_resource(TARGET FILE_NAME DESCRIPTION FILE_TYPE MANIFEST_ID): gives a DLL or a program its
# version and a manifest. The system looks for the manifest at 1 in a program and at 2 in a DLL.
function(windows_resource target file_name description file_type manifest_id)
  string(REPLACE . , version_numbers ${PROJECT_VERSION}.0)
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${file_name}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/windows_resource.rc.in ${resource} @ONLY)
  target_sources(${target} PRIVATE ${resource})
endfunction()
