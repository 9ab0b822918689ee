# kestrelink_saml_bundle(TARGET): puts the resource bundle beside the program or module that TARGET
# builds, where the static library looks for it. An installed client brings the same folder along:
#   install(DIRECTORY "${KestrelinkSAML_BUNDLE}" DESTINATION share)
function(kestrelink_saml_bundle target)
  get_property(bundle GLOBAL PROPERTY KESTRELINK_SAML_BUNDLE)
  cmake_path(GET bundle FILENAME name)
  if(TARGET kestrelink-resources)
    add_dependencies(${target} kestrelink-resources)
  endif()
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND "${CMAKE_COMMAND}" -E copy_directory "${bundle}" "$<TARGET_FILE_DIR:${target}>/share/${name}"
    VERBATIM)
endfunction()
set_property(GLOBAL PROPERTY KESTRELINK_SAML_BUNDLE "${KestrelinkSAML_BUNDLE}")
