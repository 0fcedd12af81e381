# What every target of ours is compiled with. Kept in one interface target, so that flags add to what the
# user gives and never replace it.
add_library(tarn_compiler INTERFACE)

# Whoever builds us as a part of theirs, or a distribution that builds everything its way, has a say in hardening:
# what they ask for, or switch off, is not asked for again. Two different _FORTIFY_SOURCE would not even compile.
function(tarn_harden)
  string(TOUPPER "${CMAKE_BUILD_TYPE}" build_type)
  get_directory_property(options COMPILE_OPTIONS)
  get_directory_property(definitions COMPILE_DEFINITIONS)
  set(given "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${build_type}} ${options} ${definitions}")
  # The compiler itself may define it.
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_FLAGS -O2)
  check_cxx_source_compiles("#ifdef _FORTIFY_SOURCE\n#error\n#endif\nint main() {}" TARN_COMPILER_FORTIFIES_NOT)
  if(NOT given MATCHES "_FORTIFY_SOURCE" AND TARN_COMPILER_FORTIFIES_NOT AND NOT TARN_SANITIZE)
    # It means nothing, and warns, without optimisation.
    target_compile_definitions(tarn_compiler INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
  endif()
  if(NOT given MATCHES "-f(no-)?stack-protector")
    target_compile_options(tarn_compiler INTERFACE -fstack-protector-strong)
  endif()
endfunction()

target_compile_options(tarn_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wformat=2 -Wnull-dereference -fno-common
  $<$<BOOL:${TARN_WARNINGS_AS_ERRORS}>:-Werror>
  # gcc 12 reports null dereferences and array bounds it cannot prove, inside the standard library.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-null-dereference>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # Overlaps in std::string's operator+, which gcc 12 sees at -O3 alone (GCC bug 105651).
  target_compile_options(tarn_compiler INTERFACE -Wno-restrict)
  if(TARN_PRECOMPILE_HEADERS)
    # And what it reports nowhere else, in a header of the system that was compiled before.
    target_compile_options(tarn_compiler INTERFACE -Wno-array-bounds -Wno-stringop-overflow)
  endif()
endif()
if(TARN_SANITIZE)
  target_compile_options(tarn_compiler INTERFACE "-fsanitize=${TARN_SANITIZE}" -fno-omit-frame-pointer
    -fno-sanitize-recover=all
    # gcc's own warnings misfire on sanitized code.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  # A program that knows where it lies has nothing to relocate when it starts: of each place that is watched, the
  # sanitizer's data hold several addresses, which took a process longer than all that most tests do in it.
  target_link_options(tarn_compiler INTERFACE "-fsanitize=${TARN_SANITIZE}"
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
endif()
tarn_harden()
if(TARN_FUZZ)
  # What the fuzzer steers by, and what coverage is counted with. RapidJSON's pointer arithmetic is not ours to mend.
  # clang 14 makes no constants of std::string, as gcc 12 does, so it is not asked whether they are.
  target_compile_definitions(tarn_compiler INTERFACE constinit=)
  target_compile_options(tarn_compiler INTERFACE -fsanitize=fuzzer-no-link -fprofile-instr-generate -fcoverage-mapping
    "-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/fuzz/sanitizer-ignore.txt" -Wno-ambiguous-reversed-operator)
  target_link_options(tarn_compiler INTERFACE -fprofile-instr-generate)
endif()
target_link_options(tarn_compiler INTERFACE LINKER:-z,relro,-z,now)

# Headers that most sources include are compiled once for all of them, in the sanitizers' builds. Every source
# includes what it uses all the same: the everyday build, and whoever builds the library, go without.
function(tarn_precompile target)
  if(TARN_PRECOMPILE_HEADERS)
    target_precompile_headers(${target} ${ARGN})
    # What a compiler cache has to look at are the headers, not their compiled form.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
  endif()
endfunction()

# In a unity build, what lies in one folder is compiled as one: floors stay apart, so that their links can be
# checked. The group's name is the folder's, with "_" for "/".
function(tarn_unity_by_folder target)
  if(NOT CMAKE_UNITY_BUILD)
    return()
  endif()
  get_target_property(sources ${target} SOURCES)
  get_target_property(directory ${target} SOURCE_DIR)
  foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${directory}" OUTPUT_VARIABLE path)
    cmake_path(GET path PARENT_PATH folder)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY "${PROJECT_SOURCE_DIR}")
    string(REPLACE "/" "_" group "${folder}")
    set_source_files_properties("${source}" TARGET_DIRECTORY ${target} PROPERTIES UNITY_GROUP "${group}")
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()
