# Writes a tool's man page (section 1) from its own --help text, so that the
# two cannot drift apart. Run as a script:
#
#   cmake -DPROGRAM=<tool> [-DLAUNCHER=<emulator|args>] -DNAME=<name>
#         -DSUMMARY=<one line> -DVERSION=<version> -DOUTPUT=<file.1>
#         -P HelpToMan.cmake
#
# The help text's shape: "Usage:" lines become SYNOPSIS; a line at column 0
# that ends with ":" is a section heading; a line indented by at most six
# blanks that starts with an option, or a word followed by two blanks,
# starts a tagged paragraph, and deeper lines continue it; sections whose
# heading begins with "Example" stay as written.
cmake_minimum_required(VERSION 3.25)

foreach(_required PROGRAM NAME SUMMARY VERSION OUTPUT)
  if(NOT DEFINED ${_required})
    message(FATAL_ERROR "HelpToMan: ${_required} is not set")
  endif()
endforeach()

# The launcher's words come separated by "|", which survives a command line.
string(REPLACE "|" ";" _launcher "${LAUNCHER}")
execute_process(COMMAND ${_launcher} ${PROGRAM} --help
                OUTPUT_VARIABLE _help RESULT_VARIABLE _status)
if(NOT _status EQUAL 0)
  message(FATAL_ERROR "HelpToMan: ${PROGRAM} --help failed (${_status})")
endif()

# Roff escapes: backslashes, hyphens, and a dot or quote at a line's start.
function(_roff text out)
  string(REPLACE "\\" "\\e" text "${text}")
  string(REPLACE "-" "\\-" text "${text}")
  if(text MATCHES "^[.']")
    set(text "\\&${text}")
  endif()
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

# A tagged paragraph: an option (or a word) and the start of its text.
macro(_item term text)
  _roff("${term}" _term)
  _roff("${text}" _text)
  string(APPEND _man ".TP\n.B ${_term}\n${_text}\n")
  set(_mode item)
endmacro()

string(TOUPPER "${NAME}" _upper)
set(_man ".TH ${_upper} 1 \"\" \"pelorin ${VERSION}\" \"User Commands\"\n")
_roff("${NAME}" _name)
_roff("${SUMMARY}" _summary)
string(APPEND _man ".SH NAME\n${_name} \\- ${_summary}\n")

# Keep empty lines: mark them before the split, which drops them.
string(REPLACE ";" "\\;" _help "${_help}")
string(ASCII 1 _mark)
string(REPLACE "\n" "${_mark};" _lines "${_help}")
set(_mode text)   # text, synopsis, item, example
set(_section "")
foreach(_raw IN LISTS _lines)
  string(REPLACE "${_mark}" "" _line "${_raw}")
  if(_line STREQUAL "")
    if(_mode STREQUAL "synopsis")
      string(APPEND _man ".fi\n.SH DESCRIPTION\n")
      set(_mode text)
      set(_section DESCRIPTION)
    elseif(_mode STREQUAL "example")
      string(APPEND _man "\n")
    elseif(NOT _section STREQUAL "")
      string(APPEND _man ".PP\n")
      set(_mode text)
    endif()
  elseif(_section STREQUAL "" AND NOT _line MATCHES "^Usage:")
    # What comes before the usage is the summary, already in NAME.
  elseif(_line MATCHES "^Usage: *(.*)$")
    _roff("${CMAKE_MATCH_1}" _text)
    string(APPEND _man ".SH SYNOPSIS\n.nf\n${_text}\n")
    set(_mode synopsis)
    set(_section SYNOPSIS)
  elseif(_mode STREQUAL "synopsis")
    string(STRIP "${_line}" _text)
    _roff("${_text}" _text)
    string(APPEND _man "${_text}\n")
  elseif(_line MATCHES "^([^ ].*):$")
    if(_mode STREQUAL "example")
      string(APPEND _man ".fi\n")
    endif()
    string(TOUPPER "${CMAKE_MATCH_1}" _heading)
    _roff("${_heading}" _heading)
    string(APPEND _man ".SH \"${_heading}\"\n")
    set(_section "${_heading}")
    if(_heading MATCHES "^EXAMPLE")
      string(APPEND _man ".nf\n")
      set(_mode example)
    else()
      set(_mode text)
    endif()
  elseif(_mode STREQUAL "example")
    _roff("${_line}" _text)
    string(APPEND _man "${_text}\n")
  elseif(_line MATCHES "^ ? ? ? ? ? ?((-[A-Za-z], )?--?[A-Za-z][-A-Za-z]*( [A-Z][A-Za-z_.]*| \\[[A-Z]+\\])?) *(.*)$")
    _item("${CMAKE_MATCH_1}" "${CMAKE_MATCH_4}")
  elseif(_line MATCHES "^  ([^ ]+)  +(.*)$")
    _item("${CMAKE_MATCH_1}" "${CMAKE_MATCH_2}")
  else()
    string(STRIP "${_line}" _text)
    _roff("${_text}" _text)
    if(_line MATCHES "^       " AND _mode STREQUAL "item" AND _text MATCHES "[|]")
      string(APPEND _man ".br\n${_text}\n.br\n")
    else()
      string(APPEND _man "${_text}\n")
    endif()
  endif()
endforeach()
if(_mode STREQUAL "example" OR _mode STREQUAL "synopsis")
  string(APPEND _man ".fi\n")
endif()

file(WRITE "${OUTPUT}" "${_man}")
