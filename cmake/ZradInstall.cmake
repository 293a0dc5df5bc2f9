# Installs the headers, both libraries, the CMake package (find_package(zradutils CONFIG) gives
# zradutils::zradutils) and the pkg-config file zradutils.pc.
include(CMakePackageConfigHelpers)

set_target_properties(zradutils PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS zradplatform zradutils EXPORT zradutilsTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The "ZrRaster" module lies beside the library, where zrutSaveImage looks for it first.
if(TARGET ZrRaster)
  install(TARGETS ZrRaster LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
install(DIRECTORY include/zrad platform/include/zrplatform
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(cmakedir ${CMAKE_INSTALL_LIBDIR}/cmake/zradutils)
install(EXPORT zradutilsTargets NAMESPACE zradutils:: DESTINATION ${cmakedir})
configure_package_config_file(cmake/zradutilsConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/zradutilsConfig.cmake INSTALL_DESTINATION ${cmakedir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zradutilsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zradutilsConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/zradutilsConfigVersion.cmake DESTINATION ${cmakedir})

# The .pc file finds its prefix from where it lies, so the package can be installed anywhere.
file(RELATIVE_PATH PC_PREFIX_FROM_PCFILEDIR "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/zradutils.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zradutils.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zradutils.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
