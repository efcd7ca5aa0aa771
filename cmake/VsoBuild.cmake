# What every target of the project is built with, and the two ways to add one.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

if(VSO_CCACHE)
  find_program(VSO_CCACHE_PROGRAM ccache)
  mark_as_advanced(VSO_CCACHE_PROGRAM)
  if(VSO_CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${VSO_CCACHE_PROGRAM})
    if(VSO_PRECOMPILE)
      # Without these ccache leaves every source with a precompiled header to the compiler.
      set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
                                      ${VSO_CCACHE_PROGRAM})
    endif()
  endif()
endif()

# Usage requirements that stay inside this build. Generated code takes the first set only.
#
# vso_instrumentation: sanitizers, coverage, source names in log lines that do not depend on where the tree was checked
# out, and calls within a library that may be inlined although it is position-independent.
add_library(vso_instrumentation INTERFACE)
target_compile_options(vso_instrumentation INTERFACE -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/= -fno-semantic-interposition)
if(VSO_SANITIZE)
  # Frame pointers make the reports readable; a finding of the undefined-behaviour sanitizer ends the program like
  # any other.
  target_compile_options(vso_instrumentation INTERFACE -fsanitize=${VSO_SANITIZE} -fno-sanitize-recover=all
                                                       -fno-omit-frame-pointer)
  target_link_options(vso_instrumentation INTERFACE -fsanitize=${VSO_SANITIZE})
  if(VSO_SANITIZE MATCHES "undefined")
    # To look at an object of a kind that is new to it, this check opens a pipe, and takes a pipe that cannot be opened
    # for a bad object: it would end any process that has run out of descriptors, which tests bring about.
    target_compile_options(vso_instrumentation INTERFACE -fno-sanitize=vptr)
  endif()
  if(VSO_SANITIZE MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Asio's fences are not followed by the sanitizer, which is no warning of ours.
    target_compile_options(vso_instrumentation INTERFACE -Wno-tsan)
  endif()
endif()
if(VSO_COVERAGE)
  target_compile_options(vso_instrumentation INTERFACE --coverage)
  target_link_options(vso_instrumentation INTERFACE --coverage)
endif()

# vso_build_options: the same and the warnings.
add_library(vso_build_options INTERFACE)
target_compile_options(vso_build_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow
                                                   $<$<BOOL:${VSO_WERROR}>:-Werror>)
target_link_libraries(vso_build_options INTERFACE vso_instrumentation)

# vso_add_library(<name> INCLUDE_ROOT <dir> SOURCES <file>... [LINK <PUBLIC|PRIVATE lib>...])
#
# A library that this project exports as vso::<name>. INCLUDE_ROOT is the folder that its include paths start from.
function(vso_add_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "INCLUDE_ROOT" "SOURCES;LINK")
  add_library(${name} ${arg_SOURCES})
  add_library(vso::${name} ALIAS ${name})
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  target_compile_features(${name} PUBLIC cxx_std_17)
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${arg_INCLUDE_ROOT}>
                                            $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${name} ${arg_LINK} PRIVATE $<BUILD_INTERFACE:vso_build_options>)
  set_property(GLOBAL APPEND PROPERTY VSO_EXPORTED_LIBRARIES ${name})
endfunction()

# vso_add_executable(<name> SOURCES <file>... [LINK <lib>...])
function(vso_add_executable name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINK} vso_build_options)
endfunction()
