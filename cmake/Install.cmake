# What `cmake --install` puts where, besides the tools, and how other builds find it: find_package(model3d)
# or pkg-config.
include(CMakePackageConfigHelpers)

install(TARGETS kora model3d_plugin LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/iff include/kora include/model3d include/qelf DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN *.h)

foreach(document README.md CHANGELOG.md LICENSE)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${document})
    install(FILES ${document} DESTINATION ${CMAKE_INSTALL_DOCDIR})
  endif()
endforeach()
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN *.md)
install(DIRECTORY assets/ DESTINATION ${CMAKE_INSTALL_DATADIR}/model3d/samples)

set(cmake_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/model3d)
configure_package_config_file(cmake/model3dConfig.cmake.in ${CMAKE_BINARY_DIR}/model3dConfig.cmake
                              INSTALL_DESTINATION ${cmake_package_dir}
                              PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_DATADIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/model3dConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/model3dConfig.cmake ${CMAKE_BINARY_DIR}/model3dConfigVersion.cmake
        DESTINATION ${cmake_package_dir})

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_PREFIX}/${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
foreach(name kora model3d)
  configure_file(cmake/${name}.pc.in ${CMAKE_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_dir})
endforeach()
