# Writes the names of the functions that the library calls and the embedded
# switch defines, as lines of a C++ list.
#   cmake -DNM=… -DLIBRARY=archive -DSWITCH=archive -DOUTPUT=file -P this
cmake_minimum_required(VERSION 3.25)

function(symbols archive option types result)
  execute_process(COMMAND ${NM} -P ${option} ${archive}
    OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "(^|\n)[A-Za-z_][A-Za-z0-9_]* [${types}]" lines "${listing}")
  list(TRANSFORM lines REPLACE "\n" "")
  list(TRANSFORM lines REPLACE " [${types}]$" "")
  list(REMOVE_DUPLICATES lines)
  set(${result} "${lines}" PARENT_SCOPE)
endfunction()

symbols(${LIBRARY} -u "U" called)
symbols(${SWITCH} --defined-only "T" defined)
set(names "")
foreach(name IN LISTS called)
  if(name IN_LIST defined)
    list(APPEND names ${name})
  endif()
endforeach()
list(SORT names COMPARE STRING)
if(NOT names)
  message(FATAL_ERROR "no function of the platform found in ${LIBRARY}")
endif()
list(TRANSFORM names REPLACE "(.+)" "\"\\1\",")
list(JOIN names "\n" text)
file(CONFIGURE OUTPUT ${OUTPUT} CONTENT "${text}\n" @ONLY)
