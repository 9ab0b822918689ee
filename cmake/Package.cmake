# `cpack` makes two Debian packages: the library with its tool, and what is needed to build with it.

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_PACKAGE_CONTACT "The kestrelink-saml authors <maintainers@kestrelink.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "SAML 2.0 messages of television sign-in")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)

set(runtime "libkestrelink-saml${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${runtime}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "SAML 2.0 messages of television sign-in
 Reads a television provider's answer to a sign-in and makes the requests that
 go before and after it. This package holds the shared library, the schema
 files it validates by, and the command-line tool ksaml.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkestrelink-saml-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libxml2-dev, nettle-dev, uuid-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "development files for kestrelink-saml
 Headers, static library, and the files by which CMake and pkg-config find the
 library.")

include(CPack)
