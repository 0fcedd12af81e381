# Builds the library and the store's tests on the second platform, in a build tree of its own, and runs them there.
# Without optimisation, which would take longer than it saves: what is asked is what the library needs of a platform.
# Variables: SOURCE_DIR, WORK_DIR, GENERATOR, COMPILER, LAUNCHER, FEWER (fewer, larger compilations)
function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Runs a test program but for the tests named, all of which there have to be.
function(run_tests program)
  list(LENGTH ARGN expected)
  list(JOIN ARGN ":" left_out)
  execute_process(COMMAND "${WORK_DIR}/${program}" --gtest_list_tests "--gtest_filter=${left_out}"
    OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "\n  [^\n]+" listed "${listed}")
  list(LENGTH listed found)
  if(NOT found EQUAL expected)
    message(FATAL_ERROR "${program} has ${found} of the ${expected} tests that are to be left out: ${ARGN}")
  endif()
  run("${WORK_DIR}/${program}" --gtest_brief=1 "--gtest_filter=-${left_out}")
endfunction()

run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}" -G "${GENERATOR}" --log-level=WARNING
  "-DTARN_PLATFORM=${SOURCE_DIR}/tests/platform" -DTARN_BUILD_TOOLS=OFF -DTARN_WARNINGS_AS_ERRORS=ON
  "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}"
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 "-DTARN_PRECOMPILE_HEADERS=${FEWER}" "-DCMAKE_UNITY_BUILD=${FEWER}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}" --target tarnconfigstore store_test platform_test)

# The embedded platform promises more than platform/include does; what is left out here is about that.
run_tests(tests/store/store_test
  # Opens for each connection, and prepares for each use.
  Store.NeverOpensOrPreparesTwice
  # The memory of one process is no other's.
  ApplyingKilled.LeavesAllOrNothing)
run_tests(tests/platform_test
  # As above: it keeps neither connections nor statements for the next user.
  Statements.OfOneTextGoToOneUserAtATime
  Transactions.AHandleDroppedInTheMiddleIsRolledBack)
