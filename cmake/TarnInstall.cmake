include(CMakePackageConfigHelpers)

install(TARGETS tarnconfigstore EXPORT tarnconfigstoreTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/tarnconfigstore" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.h")
set(TARN_TYPES_INSTALL_DIR "${CMAKE_INSTALL_DATADIR}/tarnconfigstore/types")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/share/types/" DESTINATION "${TARN_TYPES_INSTALL_DIR}")
install(FILES "${PROJECT_SOURCE_DIR}/docs/man/tarnconfigstore.3" DESTINATION "${CMAKE_INSTALL_MANDIR}/man3")
install(FILES "${PROJECT_SOURCE_DIR}/docs/man/tarn-types.5" DESTINATION "${CMAKE_INSTALL_MANDIR}/man5")
if(TARGET tarnctl)
  install(TARGETS tarnctl EXPORT tarnconfigstoreTargets RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  # Where each shell looks by itself.
  set(completion "${PROJECT_SOURCE_DIR}/tools/tarnctl/completion/tarnctl")
  install(FILES "${completion}.bash" DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME tarnctl)
  install(FILES "${completion}.zsh" DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" RENAME _tarnctl)
  install(FILES "${completion}.fish" DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
  install(FILES "${PROJECT_SOURCE_DIR}/docs/man/tarnctl.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
endif()

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tarnconfigstore")
install(EXPORT tarnconfigstoreTargets NAMESPACE tarnconfigstore:: DESTINATION "${package_dir}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/tarnconfigstoreConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/tarnconfigstoreConfig.cmake" INSTALL_DESTINATION "${package_dir}"
  PATH_VARS TARN_TYPES_INSTALL_DIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tarnconfigstoreConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/tarnconfigstoreConfig.cmake"
  "${PROJECT_BINARY_DIR}/tarnconfigstoreConfigVersion.cmake"
  "${PROJECT_SOURCE_DIR}/cmake/TarnGenerateTypes.cmake" DESTINATION "${package_dir}")

# Directories below the prefix are found from where the file lies, wherever that was installed or moved to;
# those that were given as absolute ones are what they are.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(TARN_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
  set(TARN_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
else()
  file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" up "${up}")
  set(TARN_PC_PREFIX "\${pcfiledir}/${up}")
  set(TARN_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(TARN_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
else()
  set(TARN_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/tarnconfigstore.pc.in"
  "${PROJECT_BINARY_DIR}/tarnconfigstore.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tarnconfigstore.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
