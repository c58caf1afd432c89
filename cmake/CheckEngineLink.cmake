# Holds a tool to the part of the engine that reads recordings: fails when
# the program holds the module's "Pelorin" trace channel, its threads or its
# work loop, which belong to the loaded module alone. Run as a test:
#   cmake -DPROGRAM=<program> -DNM=<nm> -P CheckEngineLink.cmake

cmake_policy(VERSION 3.20)

foreach(_variable PROGRAM NM)
  if(NOT ${_variable})
    message(FATAL_ERROR "CheckEngineLink: ${_variable} is not set")
  endif()
endforeach()

execute_process(COMMAND ${NM} -C ${PROGRAM} OUTPUT_VARIABLE _symbols RESULT_VARIABLE _result)
if(NOT _result EQUAL 0)
  message(FATAL_ERROR "CheckEngineLink: ${NM} could not read ${PROGRAM}")
endif()
string(REPLACE "\n" ";" _symbols "${_symbols}")
set(_refused 0)
foreach(_line IN LISTS _symbols)
  if(_line MATCHES "g_pelorinChannel|Quillan::(Thread|WorkLoop|Trace)[A-Za-z]*::")
    message(SEND_ERROR "CheckEngineLink: ${PROGRAM} links the module's own ${CMAKE_MATCH_0}: ${_line}")
    math(EXPR _refused "${_refused} + 1")
  endif()
endforeach()
if(_refused GREATER 0)
  message(FATAL_ERROR "CheckEngineLink: ${_refused} symbol(s) of the module's trace channel or threads")
endif()
message(STATUS "CheckEngineLink: ${PROGRAM} holds no trace channel and no engine thread")
