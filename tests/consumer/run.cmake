# Installs the build, builds the consumer project against it with find_package and pkg-config, and runs it.
# Variables: BUILD_DIR, SOURCE_DIR, WORK_DIR, LIBDIR, GENERATOR
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/tests/consumer" -B "${WORK_DIR}/build" -G "${GENERATOR}"
  "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer" "${WORK_DIR}/root" "${prefix}/share/tarnconfigstore/types")
set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
run(pkg-config --exists --print-errors "tarnconfigstore >= 1.0")
