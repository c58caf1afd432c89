# Holds the module to the C library calls it is meant to make: lists every
# symbol that the built libpelorin.so imports from the C library (libc,
# libpthread and libm, whose symbols carry a GLIBC_ version) and fails
# naming each one that the allow-list does not hold. A new import fails until it is added to
# the list on purpose, with the reason the head unit's C library has it.
# Run as a test:
#   cmake -DMODULE=<libpelorin.so> -DALLOWED=<list> -DREADELF=<readelf> -P CheckImports.cmake

cmake_policy(VERSION 3.20)

foreach(_variable MODULE ALLOWED READELF)
  if(NOT ${_variable})
    message(FATAL_ERROR "CheckImports: ${_variable} is not set")
  endif()
endforeach()

execute_process(COMMAND ${READELF} --dyn-syms --wide ${MODULE}
  OUTPUT_VARIABLE _symbols RESULT_VARIABLE _result)
if(NOT _result EQUAL 0)
  message(FATAL_ERROR "CheckImports: ${READELF} could not read ${MODULE}")
endif()

# An allow-list line: a symbol name, blanks, and why it is there.
file(STRINGS ${ALLOWED} _lines)
set(_allowed "")
foreach(_line IN LISTS _lines)
  if(_line MATCHES "^([A-Za-z_][A-Za-z0-9_]*)[ \t]+[^ \t]")
    list(APPEND _allowed ${CMAKE_MATCH_1})
  elseif(NOT _line MATCHES "^[ \t]*(#.*)?$")
    message(FATAL_ERROR "CheckImports: ${ALLOWED}: a line must be a name and the reason for it: ${_line}")
  endif()
endforeach()

string(REPLACE "\n" ";" _symbols "${_symbols}")
set(_imported "")
set(_refused 0)
foreach(_line IN LISTS _symbols)
  # "Num: Value Size Type Bind Vis UND name@GLIBC_x.y (n)"
  if(NOT _line MATCHES "[ \t]UND[ \t]+([A-Za-z_][A-Za-z0-9_]*)@+GLIBC_")
    continue()
  endif()
  set(_name ${CMAKE_MATCH_1})
  list(APPEND _imported ${_name})
  if(NOT _name IN_LIST _allowed)
    message(SEND_ERROR "${MODULE} imports ${_name} from the C library; it is not in ${ALLOWED}")
    math(EXPR _refused "${_refused} + 1")
  endif()
endforeach()

if(_refused GREATER 0)
  message(FATAL_ERROR "CheckImports: ${_refused} import(s) not allowed")
endif()
list(REMOVE_DUPLICATES _imported)
list(LENGTH _imported _count)
if(_count EQUAL 0)
  message(FATAL_ERROR "CheckImports: no C library import found in ${MODULE}: is it a module?")
endif()
message(STATUS "CheckImports: ${_count} C library imports, all allowed")
