# tarn_generate_types(TARGET TYPE-FILE... [NAMESPACE A::B])
#
# Gives a target a header for each type file, with typed accessors for the members of the type:
# network-switches.json becomes "tarn_types/network-switches.h". It is written anew when the file
# changes. A file that describes no type fails the build.
#
# The tool that writes them is the tarnctl of the package, or of the build that has it; TARN_TARNCTL
# names another, as whoever compiles for another machine needs it.
function(tarn_generate_types target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "NAMESPACE" "")
  if(NOT TARGET ${target})
    message(FATAL_ERROR "tarn_generate_types: there is no target ${target}")
  elseif(NOT arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tarn_generate_types: no type files are given for ${target}")
  endif()
  if(TARN_TARNCTL)
    set(tool "${TARN_TARNCTL}")
    set(tool_dependency "${TARN_TARNCTL}")
  elseif(TARGET tarnconfigstore::tarnctl)
    set(tool tarnconfigstore::tarnctl)
    set(tool_dependency tarnconfigstore::tarnctl)
  else()
    message(FATAL_ERROR "tarn_generate_types: there is no tarnctl; set TARN_BUILD_TOOLS to ON, or TARN_TARNCTL to its path")
  endif()
  set(options)
  if(arg_NAMESPACE)
    set(options --namespace "${arg_NAMESPACE}")
  endif()

  set(include_dir "${CMAKE_CURRENT_BINARY_DIR}/tarn_types.${target}")
  set(headers)
  foreach(type_file IN LISTS arg_UNPARSED_ARGUMENTS)
    cmake_path(ABSOLUTE_PATH type_file NORMALIZE)
    cmake_path(GET type_file STEM LAST_ONLY name)
    set(header "${include_dir}/tarn_types/${name}.h")
    get_source_file_property(known "${header}" GENERATED)
    if(header IN_LIST headers OR known)
      message(FATAL_ERROR "tarn_generate_types: ${target} has a header \"tarn_types/${name}.h\" already: ${type_file}")
    endif()
    add_custom_command(OUTPUT "${header}"
      COMMAND ${tool} schema generate-cpp --from "${type_file}" --output "${header}" ${options}
      DEPENDS "${type_file}" ${tool_dependency}
      COMMENT "Generating tarn_types/${name}.h" VERBATIM)
    list(APPEND headers "${header}")
  endforeach()
  file(MAKE_DIRECTORY "${include_dir}/tarn_types")
  target_sources(${target} PRIVATE ${headers})
  get_target_property(kind ${target} TYPE)
  if(kind STREQUAL "INTERFACE_LIBRARY")
    target_include_directories(${target} INTERFACE "$<BUILD_INTERFACE:${include_dir}>")
    target_link_libraries(${target} INTERFACE tarnconfigstore::tarnconfigstore)
  else()
    target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${include_dir}>")
    target_link_libraries(${target} PUBLIC tarnconfigstore::tarnconfigstore)
  endif()
endfunction()
