# Installs the build, builds the consumer project and the examples against it with find_package, and runs them;
# what the examples print is compared with what they say they print. pkg-config has to find the installation, too.
# Variables: BUILD_DIR, SOURCE_DIR, WORK_DIR, LIBDIR, GENERATOR
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
set(types "${prefix}/share/tarnconfigstore/types")
function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
function(build project)
  run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/${project}" -B "${WORK_DIR}/${project}" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${prefix}" ${ARGN})
  run("${CMAKE_COMMAND}" --build "${WORK_DIR}/${project}")
endfunction()
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")

build(tests/consumer "-DODD_TYPE=${SOURCE_DIR}/tests/tool/types/odd_names.json")
run("${WORK_DIR}/tests/consumer/consumer" "${WORK_DIR}/root" "${types}")
run("${WORK_DIR}/tests/consumer/typed" "${WORK_DIR}/typed_root" "${types}")

# The example in the umbrella header is what the consumer just ran.
run(sed -n "s|^//     ||p" "${prefix}/include/tarnconfigstore/tarnconfigstore.h" OUTPUT_FILE "${WORK_DIR}/shown")
run(sed -n -e "/ begin$/,/ end$/{" -e "/ begin$/d" -e "/ end$/d" -e "s|^  ||p" -e "}"
  "${SOURCE_DIR}/tests/consumer/main.cpp" OUTPUT_FILE "${WORK_DIR}/run")
run(diff -u "${WORK_DIR}/shown" "${WORK_DIR}/run")
run(test -s "${WORK_DIR}/shown")

build(examples)
run("${WORK_DIR}/examples/switches" "${types}" OUTPUT_FILE "${WORK_DIR}/switches.printed")
run(diff -u "${SOURCE_DIR}/examples/switches.expected" "${WORK_DIR}/switches.printed")

# What these pages show is run, in the order in which they show it.
foreach(page README docs/getting-started docs/types docs/parts docs/boots docs/documents docs/errors docs/operators-day)
  run(bash "${SOURCE_DIR}/tests/consumer/run_page.sh" "${SOURCE_DIR}/${page}.md" "${prefix}" "${COMPILER}"
    "${WORK_DIR}/pages/${page}")
endforeach()

# What pkg-config says builds a program, wherever the package was moved to, and whichever directory is for libraries.
function(try_pkg_config prefix libdir)
  set(ENV{PKG_CONFIG_PATH} "${prefix}/${libdir}/pkgconfig")
  run(pkg-config --exists --print-errors "tarnconfigstore >= 1.0")
  execute_process(COMMAND pkg-config --cflags --libs tarnconfigstore OUTPUT_VARIABLE flags COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run("${COMPILER}" -std=c++17 "${SOURCE_DIR}/tests/consumer/main.cpp" -o "${WORK_DIR}/by-pkg-config" ${flags})
endfunction()
file(RENAME "${prefix}" "${WORK_DIR}/moved")
try_pkg_config("${WORK_DIR}/moved" "${LIBDIR}")

# As a part of another project: the library alone, optimised, hardened as that project says. Installed elsewhere.
set(part "${WORK_DIR}/part")
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/tests/consumer/part" -B "${part}" -G "${GENERATOR}" "-DTARN_DIR=${SOURCE_DIR}"
  "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_INSTALL_LIBDIR=lib/of/some-machine")
