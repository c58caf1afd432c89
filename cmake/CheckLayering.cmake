# Keeps the source folders layered: a file may include headers of its own
# folder and of the folders below it, never of one above.
#   platform -> runtime -> producers -> player -> module -> host
# Run as a test: cmake -DSOURCE_DIR=<project> -P CheckLayering.cmake
# Fails naming every file and line that reaches up. tests/, bench/ and fuzz/
# may include anything and are not scanned.

if(NOT SOURCE_DIR)
  message(FATAL_ERROR "CheckLayering: SOURCE_DIR is not set")
endif()

set(_floors platform runtime producers player module host)

set(_violations 0)
foreach(_folder IN LISTS _floors)
  list(FIND _floors ${_folder} _own)
  file(GLOB_RECURSE _files ${SOURCE_DIR}/${_folder}/*.h ${SOURCE_DIR}/${_folder}/*.cpp)
  foreach(_file IN LISTS _files)
    file(READ ${_file} _text)
    # Make every line one list element: characters that CMake lists treat
    # specially are replaced first (they never matter in an include line).
    string(REPLACE "\\" "/" _text "${_text}")
    string(REPLACE ";" "," _text "${_text}")
    string(REPLACE "[" "(" _text "${_text}")
    string(REPLACE "]" ")" _text "${_text}")
    string(REPLACE "\n" ";" _lines "${_text}")
    set(_number 0)
    foreach(_line IN LISTS _lines)
      math(EXPR _number "${_number} + 1")
      if(NOT _line MATCHES "^[ \t]*#[ \t]*include[ \t]*\"([A-Za-z_]+)/")
        continue()
      endif()
      list(FIND _floors ${CMAKE_MATCH_1} _included)
      if(_included GREATER _own)
        file(RELATIVE_PATH _name ${SOURCE_DIR} ${_file})
        message(SEND_ERROR "${_name}:${_number}: ${_folder} includes from ${CMAKE_MATCH_1}, a floor above")
        math(EXPR _violations "${_violations} + 1")
      endif()
    endforeach()
  endforeach()
endforeach()

if(_violations GREATER 0)
  message(FATAL_ERROR "CheckLayering: ${_violations} include(s) reach a floor above")
endif()
