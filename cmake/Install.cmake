# The installed package: headers, import libraries, DLLs, message modules, the tool, and the CMake package ZkTools with
# its target ZkTools::ZkTools.

include(CMakePackageConfigHelpers)

set(sPackageDir lib/cmake/ZkTools)

install(TARGETS ZkBase ZkTools EXPORT ZkToolsTargets
  RUNTIME DESTINATION bin
  ARCHIVE DESTINATION lib)
install(TARGETS ZkToolsMessages ZkToolsMessagesDe LIBRARY DESTINATION bin)
install(TARGETS zk RUNTIME DESTINATION bin)
# With those of the dependencies, where these are no static libraries.
install(FILES ${ZK_RUNTIME_DLLS} $<TARGET_RUNTIME_DLLS:ZkTools> DESTINATION bin)
install(DIRECTORY include/ZkBase include/ZkTools DESTINATION include FILES_MATCHING PATTERN "*.h")

install(EXPORT ZkToolsTargets NAMESPACE ZkTools:: DESTINATION ${sPackageDir})
configure_package_config_file(cmake/ZkToolsConfig.cmake.in ${CMAKE_BINARY_DIR}/package/ZkToolsConfig.cmake
  INSTALL_DESTINATION ${sPackageDir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/ZkToolsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_BINARY_DIR}/package/ZkToolsConfig.cmake
  ${CMAKE_BINARY_DIR}/package/ZkToolsConfigVersion.cmake
  DESTINATION ${sPackageDir})
