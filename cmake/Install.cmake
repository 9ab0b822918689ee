# What `cmake --install` puts where. The tree may be moved afterwards: the library finds its resource
# bundle, and CMake and pkg-config find the library, relative to where they are.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Compresses a file, the same bytes every time, into the build folder under that name.
function(kestrelink_compressed file name)
  set(compressed "${PROJECT_BINARY_DIR}/${name}")
  add_custom_command(OUTPUT "${compressed}"
    COMMAND sh -c [=[gzip -9nc "$0" >"$1"]=] "${file}" "${compressed}"
    DEPENDS "${file}" VERBATIM)
  add_custom_target(compressed-${name} ALL DEPENDS "${compressed}")
endfunction()

include(cmake/InstallLayout.cmake)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KestrelinkSAML")

foreach(library kestrelink-saml kestrelink-saml-static)
  target_include_directories(${library} PUBLIC $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()
install(TARGETS kestrelink-saml kestrelink-saml-standard EXPORT KestrelinkSAMLTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS kestrelink-saml-static kestrelink-saml-standard-static
  EXPORT KestrelinkSAMLStaticTargets
  ARCHIVE COMPONENT development)
foreach(export KestrelinkSAMLTargets KestrelinkSAMLStaticTargets)
  install(EXPORT ${export} NAMESPACE KestrelinkSAML:: DESTINATION "${package_dir}"
    COMPONENT development)
endforeach()

set(bundle_name com.norvane.Kestrelink.SAMLFramework)
set(installed_bundle "${CMAKE_INSTALL_DATADIR}/${bundle_name}")
configure_package_config_file(cmake/KestrelinkSAMLConfig.cmake.in
  "${PROJECT_BINARY_DIR}/KestrelinkSAMLConfig.cmake" INSTALL_DESTINATION "${package_dir}"
  PATH_VARS installed_bundle NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/KestrelinkSAMLConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/KestrelinkSAMLConfig.cmake"
  "${PROJECT_BINARY_DIR}/KestrelinkSAMLConfigVersion.cmake" cmake/KestrelinkSAMLBundle.cmake
  DESTINATION "${package_dir}" COMPONENT development)
# For a client that has this project in its own tree.
set(KestrelinkSAML_BUNDLE "${PROJECT_BINARY_DIR}/share/${bundle_name}")
include(cmake/KestrelinkSAMLBundle.cmake)

function(kestrelink_install_headers component)
  foreach(header IN LISTS ARGN)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES "${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}"
      COMPONENT ${component})
  endforeach()
endfunction()
kestrelink_install_headers(development ${KESTRELINK_PUBLIC_HEADERS})

# A folder given as an absolute path stays as it is; any other is relative to the .pc file.
cmake_path(SET pc_dir NORMALIZE "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH up "/${pc_dir}" "/")
  cmake_path(SET up NORMALIZE "${up}")
  string(REGEX REPLACE "/$" "" up "${up}")
  set(pc_prefix "\${pcfiledir}/${up}")
endif()
foreach(kind lib include)
  string(TOUPPER "${kind}" upper)
  set(pc_${kind}dir "${CMAKE_INSTALL_${upper}DIR}")
  if(NOT IS_ABSOLUTE "${pc_${kind}dir}")
    string(PREPEND pc_${kind}dir "\${prefix}/")
  endif()
endforeach()
function(kestrelink_install_pc component)
  foreach(file IN LISTS ARGN)
    configure_file(cmake/${file}.in "${PROJECT_BINARY_DIR}/${file}" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${file}" DESTINATION "${pc_dir}" COMPONENT ${component})
  endforeach()
endfunction()
kestrelink_install_pc(development kestrelink-saml.pc kestrelink-saml-static.pc)

if(TARGET kestrelink-saml-signin)
  set_target_properties(kestrelink-saml-signin PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS kestrelink-saml-signin EXPORT KestrelinkSAMLSigninTargets
    LIBRARY COMPONENT signin NAMELINK_COMPONENT signin_development)
  install(EXPORT KestrelinkSAMLSigninTargets NAMESPACE KestrelinkSAML::
    DESTINATION "${package_dir}" COMPONENT signin_development)
  kestrelink_install_headers(signin_development ${KESTRELINK_SIGNIN_HEADERS})
  kestrelink_install_pc(signin_development kestrelink-saml-signin.pc)
endif()

install(DIRECTORY "${KestrelinkSAML_BUNDLE}"
  DESTINATION "${CMAKE_INSTALL_DATADIR}" COMPONENT runtime)

if(TARGET ksaml)
  file(RELATIVE_PATH lib_from_bin "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(ksaml PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
  install(TARGETS ksaml RUNTIME COMPONENT signin)
  kestrelink_compressed("${PROJECT_SOURCE_DIR}/docs/ksaml.1" ksaml.1.gz)
  install(FILES "${PROJECT_BINARY_DIR}/ksaml.1.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT signin)
  install(FILES tools/completion/ksaml
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT signin)
endif()
