# cmake -D SOURCE=… -D OUTPUT=… -D VERSION=… -P WriteVersion.cmake
#
# The revision is the commit in the file "revision" (in an archive), or the last commit of the repository.
# Without either it is the version of the project.

set(PISTONFIELD_REVISION ${VERSION})
set(PISTONFIELD_COMMIT_DATE "unknown")
set(commit "")
if(EXISTS ${SOURCE}/revision)
  file(READ ${SOURCE}/revision commit)
elseif(EXISTS ${SOURCE}/.git) # not a repository in a parent folder
  find_package(Git QUIET)
  if(Git_FOUND)
    execute_process(
      COMMAND ${GIT_EXECUTABLE} log -1 --format=%h%n%cd --date=format:%Y/%m/%d\ %H:%M:%S
      WORKING_DIRECTORY ${SOURCE} OUTPUT_VARIABLE commit ERROR_QUIET)
  endif()
endif()
if(commit MATCHES "^([^\n]+)\n([^\n]+)")
  set(PISTONFIELD_REVISION ${CMAKE_MATCH_1})
  set(PISTONFIELD_COMMIT_DATE ${CMAKE_MATCH_2})
endif()
configure_file(${SOURCE}/src/matlab/version.h.in ${OUTPUT} @ONLY)
