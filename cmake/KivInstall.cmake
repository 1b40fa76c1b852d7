# What users get: the library, its headers, kiv, and two ways to find them, CMake's and pkg-config's.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KivCliSupport)
install(TARGETS KivCliSupport EXPORT KivCliSupportTargets)
install(EXPORT KivCliSupportTargets NAMESPACE KivCliSupport:: DESTINATION ${package_dir})
install(DIRECTORY platform/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KivCliSupport FILES_MATCHING PATTERN "*.h")
install(DIRECTORY Kiv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KivCliSupport FILES_MATCHING PATTERN "*.h")
if(TARGET kiv)
   install(TARGETS kiv)
   configure_file(programs/systemd/kiv-follow.service.in kiv-follow.service @ONLY)
   install(FILES ${PROJECT_BINARY_DIR}/kiv-follow.service DESTINATION lib/systemd/system)
   install(FILES programs/systemd/kiv.sysusers DESTINATION lib/sysusers.d RENAME kiv.conf)
endif()

configure_package_config_file(cmake/KivCliSupportConfig.cmake.in KivCliSupportConfig.cmake
   INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(KivCliSupportConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KivCliSupportConfig.cmake ${PROJECT_BINARY_DIR}/KivCliSupportConfigVersion.cmake
   DESTINATION ${package_dir})

file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/KivCliSupport.pc.in KivCliSupport.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/KivCliSupport.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
