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
# What the symbols that are used do not tell: the C library must unpack relocations, and libxml2 before
# 2.14, whose package has no version in its name, must be one that was tried.
set(depends "")
if(KESTRELINK_PACKED_RELOCATIONS)
  list(APPEND depends "libc6 (>= 2.36)")
endif()
if(LIBXML2_VERSION_STRING VERSION_LESS 2.14)
  list(APPEND depends "libxml2 (>= 2.9.14)")
endif()
list(JOIN depends ", " CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS)
file(WRITE "${PROJECT_BINARY_DIR}/debian/shlibs"
  "libkestrelink-saml ${PROJECT_VERSION_MAJOR} ${runtime} (>= ${PROJECT_VERSION})\n")
# A trigger runs ldconfig. CPack leaves out its own scripts that would when these two, which do not
# exist, are named.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/debian/shlibs;${PROJECT_SOURCE_DIR}/cmake/debian/triggers"
  "${PROJECT_BINARY_DIR}/debian/none/postinst;${PROJECT_BINARY_DIR}/debian/none/postrm")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"Reads a television provider's answer to a sign-in and makes the requests that
go before and after it. This package holds the shared library, the schema
files it validates by, and the command-line tool ksaml.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkestrelink-saml-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libxml2-dev, uuid-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"Headers, static library, and the files by which CMake and pkg-config find the
library.")

# What Debian wants to find beside a package's files.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  configure_file(cmake/debian/changelog.in "${PROJECT_BINARY_DIR}/changelog" @ONLY)
  kestrelink_compressed("${PROJECT_BINARY_DIR}/changelog" changelog.gz)
  foreach(component runtime development)
    string(TOUPPER "${component}" upper)
    set(doc "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
    install(FILES "${PROJECT_BINARY_DIR}/changelog.gz" cmake/debian/copyright
      DESTINATION "${doc}" COMPONENT ${component})
  endforeach()
endif()

include(CPack)
