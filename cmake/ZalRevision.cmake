# The source revision and commit count that the version record carries.
set(ZAL_SOURCE_REVISION "unknown")
set(ZAL_VERSION_BUILD 0)
find_package(Git QUIET)
if(GIT_FOUND)
  execute_process(COMMAND ${GIT_EXECUTABLE} rev-parse --short=12 HEAD
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE revision
    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE revision_failed)
  if(NOT revision_failed AND revision)
    set(ZAL_SOURCE_REVISION ${revision})
  endif()
  execute_process(COMMAND ${GIT_EXECUTABLE} rev-list --count HEAD
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE count
    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE count_failed)
  if(NOT count_failed AND count MATCHES "^[0-9]+$")
    set(ZAL_VERSION_BUILD ${count})
  endif()
endif()
