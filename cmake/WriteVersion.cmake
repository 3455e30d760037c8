# cmake -D SOURCE=… -D OUTPUT=… -D VERSION=… -P WriteVersion.cmake
#
# The revision is the commit; without version control, the project's version.

find_package(Git QUIET)
set(PISTONFIELD_REVISION ${VERSION})
set(PISTONFIELD_COMMIT_DATE "unknown")
if(Git_FOUND)
  execute_process(
    COMMAND ${GIT_EXECUTABLE} log -1 --format=%h%n%cd --date=format:%Y/%m/%d\ %H:%M:%S
    WORKING_DIRECTORY ${SOURCE} OUTPUT_VARIABLE commit ERROR_QUIET RESULT_VARIABLE status)
  if(status EQUAL 0 AND commit MATCHES "^([^\n]+)\n([^\n]+)")
    set(PISTONFIELD_REVISION ${CMAKE_MATCH_1})
    set(PISTONFIELD_COMMIT_DATE ${CMAKE_MATCH_2})
  endif()
endif()
configure_file(${SOURCE}/src/matlab/version.h.in ${OUTPUT} @ONLY)
