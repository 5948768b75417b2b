# What the library's tests see of platform calls, held against docs/calls.md.

# The exported functions by address: made here, not in the build, so that
# clang-tidy has it too.
file(GLOB EXPORTED_HEADERS CONFIGURE_DEPENDS
  ${CMAKE_SOURCE_DIR}/asic/forwarding-sw/l3lif/pd_trident/include/*.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${EXPORTED_HEADERS} ${SCRIPTS}/calls.py ${SCRIPTS}/cpp_source.py)
set(GENERATED ${CMAKE_CURRENT_BINARY_DIR}/generated)
execute_process(
  COMMAND ${RTIFHAL_PYTHON3} -B ${SCRIPTS}/calls.py table ${GENERATED}/exported_functions.inc
  COMMAND_ERROR_IS_FATAL ANY)
target_include_directories(test_library PRIVATE ${GENERATED})

# Each shard writes a file of its own; the last entry joins them.
set(CALLS_FILES)
foreach(number RANGE 1 ${RTIFHAL_TEST_SHARDS})
  set(file ${CMAKE_CURRENT_BINARY_DIR}/calls/${number}of${RTIFHAL_TEST_SHARDS}.txt)
  set(entry library.${number}of${RTIFHAL_TEST_SHARDS})
  set_property(TEST ${entry} APPEND PROPERTY ENVIRONMENT "RTIFHAL_CALLS_FILE=${file}")
  set_property(TEST ${entry} APPEND PROPERTY FIXTURES_SETUP library_calls)
  list(APPEND CALLS_FILES ${file})
endforeach()
file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/calls)

# An optimised program has functions inlined, and under sanitizers the way through
# them looks different: such runs may see less than the page has.
set(CALLS_VERB check)
if(CMAKE_BUILD_TYPE STREQUAL Debug AND NOT RTIFHAL_SANITIZE)
  set(CALLS_VERB exact)
endif()
add_test(NAME docs.calls
  COMMAND ${RTIFHAL_PYTHON3} -B ${SCRIPTS}/calls.py ${CALLS_VERB} ${CALLS_FILES})
set_tests_properties(docs.calls PROPERTIES FIXTURES_REQUIRED library_calls)
