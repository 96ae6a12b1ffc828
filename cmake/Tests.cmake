# kelo_test(NAME unit_web LABEL unit SOURCES ... LINKS kelo_web ... [PROPERTIES ...])
#   One GoogleTest program; each TEST inside is named after the rule it holds. PARTS: see below.
#   LABEL is unit, component or e2e. LAUNCHER, if any, is a program with arguments that runs the test,
#   for instance ${KELO_WITH_DISPLAY}: a display, a session bus and a home of its own.
#
# A test that has to know a path gets it by kelo_test_paths(SOURCES a.cpp DEFINITIONS NAME="...").
set(KELO_WITH_DISPLAY ${PROJECT_SOURCE_DIR}/tests/component/with-display)
function(kelo_test)
  cmake_parse_arguments(TEST "" "NAME;LABEL;PARTS" "SOURCES;LINKS;LAUNCHER;PROPERTIES" ${ARGN})
  add_executable(${TEST_NAME} ${TEST_SOURCES})
  target_include_directories(${TEST_NAME} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${TEST_NAME} PRIVATE
    kelo_compiler kelo_temporary_folder ${TEST_LINKS} GTest::gmock GTest::gtest_main)
  # The test bodies themselves: a full optimization of what runs once takes half as long again to build.
  target_compile_options(${TEST_NAME} PRIVATE $<$<CONFIG:Release>:-O1>)
  set_target_properties(${TEST_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
  kelo_test_entries(NAME ${TEST_NAME} PARTS ${TEST_PARTS}
    COMMAND ${TEST_LAUNCHER} $<TARGET_FILE:${TEST_NAME}>
    PROPERTIES LABELS ${TEST_LABEL} TIMEOUT 300 ${TEST_PROPERTIES})
endfunction()

# kelo_test_entries(NAME ... [PARTS n] COMMAND ... PROPERTIES ...): a test program as one entry of
# ctest, not one for each test: a process start each would triple the time of a run. A program whose
# tests take minutes is n entries, each with a part of the tests, so that a busy machine finishes each
# within its limit.
function(kelo_test_entries)
  cmake_parse_arguments(ENTRY "" "NAME;PARTS" "COMMAND;PROPERTIES" ${ARGN})
  if(NOT ENTRY_PARTS)
    add_test(NAME ${ENTRY_NAME} COMMAND ${ENTRY_COMMAND})
    set_tests_properties(${ENTRY_NAME} PROPERTIES ${ENTRY_PROPERTIES})
    return()
  endif()
  foreach(part RANGE 1 ${ENTRY_PARTS})
    math(EXPR index "${part} - 1")
    add_test(NAME ${ENTRY_NAME}_${part} COMMAND ${ENTRY_COMMAND})
    set_tests_properties(${ENTRY_NAME}_${part} PROPERTIES ${ENTRY_PROPERTIES}
      ENVIRONMENT_MODIFICATION "GTEST_TOTAL_SHARDS=set:${ENTRY_PARTS};GTEST_SHARD_INDEX=set:${index}")
  endforeach()
endfunction()

# Defines paths for the files that use them, and for no other of the program: they differ from clone to
# clone, and what is compiled with one clone's paths is of no use to another through ccache.
function(kelo_test_paths)
  cmake_parse_arguments(PATHS "" "" "SOURCES;DEFINITIONS" ${ARGN})
  set_property(SOURCE ${PATHS_SOURCES} APPEND PROPERTY COMPILE_DEFINITIONS ${PATHS_DEFINITIONS})
endfunction()
