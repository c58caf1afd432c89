# Warning flags shared by every target of the project.
add_library(pelorin_warnings INTERFACE)
target_compile_options(pelorin_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wformat=2 -Wnull-dereference -Wdouble-promotion)
if(PELORIN_WERROR)
  target_compile_options(pelorin_warnings INTERFACE -Werror)
endif()

# The module's own code: no exceptions, no RTTI needs, hidden symbols.
add_library(pelorin_module_flags INTERFACE)
target_compile_options(pelorin_module_flags INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions>
  -fvisibility=hidden $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden>)
target_link_libraries(pelorin_module_flags INTERFACE pelorin_warnings)

# Adds one static library made of every .cpp of a source folder.
function(pelorin_folder_library name folder)
  file(GLOB _sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
  list(FILTER _sources EXCLUDE REGEX ".*/ModuleEntryPoints\\.cpp$")
  if(NOT _sources)
    # A folder without sources yet still offers its headers.
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} INTERFACE pelorin_platform)
    return()
  endif()
  add_library(${name} STATIC ${_sources})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC pelorin_platform PRIVATE pelorin_module_flags)
endfunction()

# Links a folder library to the libraries it uses (whatever kind it is).
function(pelorin_link_folder name)
  get_target_property(_type ${name} TYPE)
  if(_type STREQUAL "INTERFACE_LIBRARY")
    target_link_libraries(${name} INTERFACE ${ARGN})
  else()
    target_link_libraries(${name} PUBLIC ${ARGN})
  endif()
endfunction()

# The head unit's C library is not glibc: with PELORIN_POSIX_ONLY the module
# and the platform stand-ins compile against POSIX.1-2008 alone, so that a
# glibc-only call, a Linux header or a GNU extension fails to build. The one
# file that needs more (runtime/SystemExtensions.cpp) asks for it itself.
option(PELORIN_POSIX_ONLY "Compile the module against POSIX.1-2008 only" OFF)
add_library(pelorin_posix_flags INTERFACE)
if(PELORIN_POSIX_ONLY)
  target_compile_options(pelorin_posix_flags INTERFACE -U_GNU_SOURCE -D_POSIX_C_SOURCE=200809L)
endif()
target_link_libraries(pelorin_module_flags INTERFACE pelorin_posix_flags)
