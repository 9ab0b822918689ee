# KESTRELINK_HARDENING: what Debian compiles its packages with (dpkg-buildflags, hardening=+all), and
# protection of the control flow. The library parses hostile text.

if(KESTRELINK_HARDENING)
  include(CheckCXXCompilerFlag)
  check_cxx_compiler_flag(-fcf-protection KESTRELINK_CF_PROTECTION)
  target_compile_options(kestrelink-build INTERFACE
    -fstack-protector-strong -fstack-clash-protection -Wformat -Werror=format-security
    $<$<BOOL:${KESTRELINK_CF_PROTECTION}>:-fcf-protection>
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  target_link_options(kestrelink-build INTERFACE LINKER:-z,relro LINKER:-z,now)
  # Programs at a random address too.
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
endif()
