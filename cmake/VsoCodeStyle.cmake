# Targets `format` (rewrites) and `format-check`, and `tidy`, over every source file that git knows of.

find_program(VSO_CLANG_FORMAT clang-format)
find_program(VSO_RUN_CLANG_TIDY NAMES run-clang-tidy run-clang-tidy-14)
mark_as_advanced(VSO_CLANG_FORMAT VSO_RUN_CLANG_TIDY)

set(list_sources git -C ${PROJECT_SOURCE_DIR} ls-files --cached --others --exclude-standard -- "*.h" "*.cpp")
if(VSO_CLANG_FORMAT)
  add_custom_target(
    format
    COMMAND ${list_sources} | xargs --no-run-if-empty ${VSO_CLANG_FORMAT} -i
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    VERBATIM
    COMMENT "Formatting every source file")
  add_custom_target(
    format-check
    COMMAND ${list_sources} | xargs --no-run-if-empty ${VSO_CLANG_FORMAT} --dry-run -Werror
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    VERBATIM
    COMMENT "Checking the format of every source file")

  # Other versions of clang-format see some lines differently, so only the one that the tree is kept with is a test.
  execute_process(COMMAND ${VSO_CLANG_FORMAT} --version OUTPUT_VARIABLE clang_format_version ERROR_QUIET)
  if(VSO_BUILD_TESTS AND clang_format_version MATCHES "version 14\\." AND EXISTS ${PROJECT_SOURCE_DIR}/.git)
    add_test(NAME code.format COMMAND ${CMAKE_COMMAND} --build ${PROJECT_BINARY_DIR} --target format-check)
  endif()
endif()
if(VSO_RUN_CLANG_TIDY)
  # Works on the files of the compilation database, so what a preset leaves out is not looked at.
  add_custom_target(
    tidy
    COMMAND ${VSO_RUN_CLANG_TIDY} -quiet -p ${PROJECT_BINARY_DIR} "${PROJECT_SOURCE_DIR}/(vso|platform|apps|tests|bench|fuzz)/"
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    VERBATIM
    COMMENT "Running clang-tidy on every source file")
endif()
