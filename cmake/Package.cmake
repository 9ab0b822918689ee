# `cpack` makes four Debian packages: each library, and what is needed to build with it. The tool is in
# the package of the second, which it uses.

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET kestrelink-saml-signin)
  list(APPEND CPACK_COMPONENTS_ALL signin signin_development)
endif()
set(CPACK_PACKAGE_CONTACT "The kestrelink-saml authors <maintainers@kestrelink.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "SAML 2.0 messages of television sign-in")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)

set(runtime "libkestrelink-saml${soversion}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${runtime}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# The symbols do not show these two needs: a C library that unpacks relocations, and a tested libxml2
# (before 2.14 its package has no version in its name).
set(depends "")
if(KESTRELINK_PACKED_RELOCATIONS)
  list(APPEND depends "libc6 (>= 2.36)")
endif()
if(LIBXML2_VERSION_STRING VERSION_LESS 2.14)
  list(APPEND depends "libxml2 (>= 2.9.14)")
endif()
list(JOIN depends ", " CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS)
file(WRITE "${PROJECT_BINARY_DIR}/debian/shlibs"
  "libkestrelink-saml ${soversion} ${runtime} (>= ${PROJECT_VERSION})\n")
# A trigger runs ldconfig. Naming two scripts that do not exist makes CPack leave out its own.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/debian/shlibs;${PROJECT_SOURCE_DIR}/cmake/debian/triggers"
  "${PROJECT_BINARY_DIR}/debian/none/postinst;${PROJECT_BINARY_DIR}/debian/none/postrm")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"Reads a television provider's SAML response to a sign-in and makes the SAML
requests. This package holds the shared library and the schema files for its
validation.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkestrelink-saml-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libxml2-dev, uuid-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"Headers, the static library, and files for CMake and pkg-config.")

set(signin_runtime "libkestrelink-saml-signin${signin_soversion}")
set(CPACK_DEBIAN_SIGNIN_PACKAGE_NAME "${signin_runtime}")
set(CPACK_DEBIAN_SIGNIN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_SIGNIN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
file(WRITE "${PROJECT_BINARY_DIR}/debian/signin/shlibs"
  "libkestrelink-saml-signin ${signin_soversion} ${signin_runtime} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_SIGNIN_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/debian/signin/shlibs;${PROJECT_SOURCE_DIR}/cmake/debian/triggers"
  "${PROJECT_BINARY_DIR}/debian/none/postinst;${PROJECT_BINARY_DIR}/debian/none/postrm")
set(CPACK_DEBIAN_SIGNIN_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_SIGNIN_DESCRIPTION
"Signs television subscribers in with SAML 2.0 identity providers: verifies,
decrypts and checks their responses, and makes signed requests. This package
holds the shared library and the command-line tool ksaml.")
set(CPACK_DEBIAN_SIGNIN_DEVELOPMENT_PACKAGE_NAME libkestrelink-saml-signin-dev)
set(CPACK_DEBIAN_SIGNIN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_SIGNIN_DEVELOPMENT_PACKAGE_DEPENDS
  "${signin_runtime} (= ${PROJECT_VERSION}), libkestrelink-saml-dev (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_SIGNIN_DEVELOPMENT_DESCRIPTION
"Headers of kestrelink-saml-signin, and files for CMake and pkg-config.")

# Debian requires these files in a package.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  configure_file(cmake/debian/changelog.in "${PROJECT_BINARY_DIR}/changelog" @ONLY)
  kestrelink_compressed("${PROJECT_BINARY_DIR}/changelog" changelog.gz)
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER "${component}" upper)
    set(doc "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
    install(FILES "${PROJECT_BINARY_DIR}/changelog.gz" cmake/debian/copyright
      DESTINATION "${doc}" COMPONENT ${component})
  endforeach()
endif()

include(CPack)
