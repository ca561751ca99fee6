# Installs the library, its headers, the CMake package (find_package(zalaccelerate) gives
# zalaccelerate::zalaccelerate) and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS zalaccelerate zalcore
  EXPORT zalaccelerateTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zalaccelerate)

set(zal_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zalaccelerate)
install(EXPORT zalaccelerateTargets NAMESPACE zalaccelerate:: DESTINATION ${zal_cmake_dir})
configure_package_config_file(cmake/zalaccelerateConfig.cmake.in
  ${PROJECT_BINARY_DIR}/zalaccelerateConfig.cmake INSTALL_DESTINATION ${zal_cmake_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zalaccelerateConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zalaccelerateConfig.cmake
  ${PROJECT_BINARY_DIR}/zalaccelerateConfigVersion.cmake DESTINATION ${zal_cmake_dir})

# Relocatable: the prefix is found from where the .pc file lies.
file(RELATIVE_PATH zal_pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
set(ZAL_PC_PREFIX "\${pcfiledir}/${zal_pc_to_prefix}")
configure_file(cmake/zalaccelerate.pc.in ${PROJECT_BINARY_DIR}/zalaccelerate.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zalaccelerate.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
