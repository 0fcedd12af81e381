# Builds the library and the store's tests on the second platform, in a build tree of its own, and runs them there, by what
# docs/porting.md shows. Without optimisation, which would take longer than it saves: what is asked is what the library needs
# of a platform.
# Variables: SOURCE_DIR, WORK_DIR, GENERATOR, COMPILER, LAUNCHER, FEWER (fewer, larger compilations)
function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(READ "${SOURCE_DIR}/docs/porting.md" page)
file(READ "${SOURCE_DIR}/tests/platform/CMakeLists.txt" platform)

# What the page quotes of the platform stands there.
string(REGEX MATCHALL "```cmake\n[^`]+" quoted "${page}")
list(LENGTH quoted count)
if(count LESS 2)
  message(FATAL_ERROR "docs/porting.md shows ${count} parts of a platform")
endif()
foreach(part IN LISTS quoted)
  string(REPLACE "```cmake\n" "" part "${part}")
  string(FIND "${platform}" "${part}" place)
  if(place LESS 0)
    message(FATAL_ERROR "docs/porting.md quotes what does not stand in tests/platform/CMakeLists.txt:\n${part}")
  endif()
endforeach()

# The same build tree as the page's, where tests are not to take as long.
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}" -G "${GENERATOR}" --log-level=WARNING
  "-DTARN_PLATFORM=${SOURCE_DIR}/tests/platform" -DTARN_BUILD_TOOLS=OFF -DTARN_WARNINGS_AS_ERRORS=ON
  "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}"
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 "-DTARN_PRECOMPILE_HEADERS=${FEWER}" "-DCMAKE_UNITY_BUILD=${FEWER}")

string(REGEX MATCHALL "```sh\n[^`]+" shown "${page}")
list(JOIN shown "\n" script)
string(REPLACE "```sh\n" "" script "${script}")
file(WRITE "${WORK_DIR}/page.sh" "set -euo pipefail\nPLATFORM=tests/platform BUILD=${WORK_DIR}\n${script}")
run(bash "${WORK_DIR}/page.sh" WORKING_DIRECTORY "${SOURCE_DIR}")

# The tests that are left out are there; and that the page runs them is no accident.
string(REGEX MATCHALL "tests/[a-z_/]+ [^\n]*gtest_filter=-[^ \n]+" programs "${script}")
list(LENGTH programs count)
if(NOT count EQUAL 2)
  message(FATAL_ERROR "docs/porting.md runs ${count} programs of tests")
endif()
foreach(program IN LISTS programs)
  string(REGEX REPLACE "^(tests/[a-z_/]+) .*" "\\1" name "${program}")
  string(REGEX REPLACE ".*gtest_filter=-" "" left_out "${program}")
  string(REPLACE ":" ";" names "${left_out}")
  execute_process(COMMAND "${WORK_DIR}/${name}" --gtest_list_tests "--gtest_filter=${left_out}"
    OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "\n  [^\n]+" listed "${listed}")
  list(LENGTH names expected)
  list(LENGTH listed found)
  if(NOT found EQUAL expected)
    message(FATAL_ERROR "${name} has ${found} of the ${expected} tests that are to be left out: ${left_out}")
  endif()
endforeach()
