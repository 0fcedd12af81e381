include(CMakePackageConfigHelpers)

install(TARGETS tarnconfigstore EXPORT tarnconfigstoreTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/tarnconfigstore" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.h")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/share/types" DESTINATION "${CMAKE_INSTALL_DATADIR}/tarnconfigstore")
if(TARGET tarnctl)
  install(TARGETS tarnctl RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tarnconfigstore")
install(EXPORT tarnconfigstoreTargets NAMESPACE tarnconfigstore:: DESTINATION "${package_dir}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/tarnconfigstoreConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/tarnconfigstoreConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tarnconfigstoreConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/tarnconfigstoreConfig.cmake"
  "${PROJECT_BINARY_DIR}/tarnconfigstoreConfigVersion.cmake" DESTINATION "${package_dir}")

configure_file("${PROJECT_SOURCE_DIR}/cmake/tarnconfigstore.pc.in"
  "${PROJECT_BINARY_DIR}/tarnconfigstore.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tarnconfigstore.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
