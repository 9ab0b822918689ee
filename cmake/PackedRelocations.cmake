# KESTRELINK_PACKED_RELOCATIONS: whether the linker packs relocations so that the C library reads them.
# The linker must ask for a C library that can (2.36), or the loader refuses what it links: mold before
# 1.11 does not. A linker that does not know the option passes it over.

function(kestrelink_check_packed_relocations)
  set(library "${PROJECT_BINARY_DIR}/CMakeFiles/packed-relocations.so")
  set(CMAKE_EXE_LINKER_FLAGS "${CMAKE_SHARED_LINKER_FLAGS}")
  file(WRITE "${PROJECT_BINARY_DIR}/CMakeFiles/packed-relocations.cpp"
    "#include <cstdlib>\nstatic int value;\nint* addresses[] = {&value, &value};\n"
    "int use() { return std::atexit(nullptr); }\n")
  try_compile(linked "${PROJECT_BINARY_DIR}/CMakeFiles/packed-relocations"
    "${PROJECT_BINARY_DIR}/CMakeFiles/packed-relocations.cpp"
    COMPILE_DEFINITIONS -fPIC
    LINK_OPTIONS -shared LINKER:-z,pack-relative-relocs
    COPY_FILE "${library}")
  set(needs "")
  if(linked)
    file(STRINGS "${library}" needs REGEX GLIBC_ABI_DT_RELR)
  endif()
  if(needs)
    set(packed ON)
  else()
    set(packed OFF)
  endif()
  set(KESTRELINK_PACKED_RELOCATIONS ${packed} CACHE BOOL "Pack the shared library's relocations")
endfunction()

if(NOT DEFINED KESTRELINK_PACKED_RELOCATIONS)
  kestrelink_check_packed_relocations()
endif()
