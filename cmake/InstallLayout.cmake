# Stops at folders that the installed library could not find its schema files in, and so would read
# messages without validation: it looks in the "share" beside itself or up to two folders above.

set(folder "${CMAKE_INSTALL_LIBDIR}")
set(data "${CMAKE_INSTALL_DATADIR}")
foreach(path folder data)
  cmake_path(ABSOLUTE_PATH ${path} BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" NORMALIZE)
  string(REGEX REPLACE "(.)/$" "\\1" ${path} "${${path}}")
endforeach()
set(searched "")
foreach(level RANGE 2)
  cmake_path(APPEND folder share OUTPUT_VARIABLE share)
  list(APPEND searched "${share}")
  cmake_path(GET folder PARENT_PATH folder)
endforeach()
if(NOT data IN_LIST searched)
  set(severity WARNING)
  if(PROJECT_IS_TOP_LEVEL)
    set(severity FATAL_ERROR)
  endif()
  list(JOIN searched ", " searched)
  message(${severity} "The installed library would not find its schema files: they go to ${data} "
    "(CMAKE_INSTALL_DATADIR), and with this CMAKE_INSTALL_LIBDIR it looks for them in ${searched}.")
endif()
