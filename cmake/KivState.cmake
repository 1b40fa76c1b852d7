# libKivState: state directories and snapshots, on top of the library. Its reader of JSON stays inside: what is in
# state/text is neither installed nor exported. The objects are for the tests, which look inside.
pkg_check_modules(simdjson REQUIRED IMPORTED_TARGET simdjson)

file(GLOB_RECURSE sources CONFIGURE_DEPENDS state/*.cpp)
kiv_object_library(KivStateObjects ${sources})
target_link_libraries(KivStateObjects PUBLIC PkgConfig::simdjson)

add_library(KivState SHARED)
target_sources(KivState PRIVATE $<TARGET_OBJECTS:KivStateObjects>)
set_target_properties(KivState PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
   LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map
   BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN")
target_link_options(KivState PRIVATE -Wl,-O1,--gc-sections,--as-needed
   -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
target_link_libraries(KivState PUBLIC KivCliSupport PRIVATE PkgConfig::simdjson)

install(TARGETS KivState EXPORT KivCliSupportTargets)
install(DIRECTORY state DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KivCliSupport FILES_MATCHING PATTERN "*.h"
   PATTERN "text" EXCLUDE)
file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/KivState.pc.in KivState.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/KivState.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
