# kiv, the command line. All of it but main is an object library, which the tests and the benchmarks link too.
pkg_check_modules(libmnl REQUIRED IMPORTED_TARGET libmnl)

set(kiv_main ${PROJECT_SOURCE_DIR}/programs/kiv/main.cpp)
file(GLOB_RECURSE sources CONFIGURE_DEPENDS programs/*.cpp)
list(REMOVE_ITEM sources ${kiv_main})
if(sources)
   kiv_object_library(programs ${sources})
   # The kernel's headers and the C library's both define addresses; which of them come first matters.
   set_source_files_properties(programs/follow/FpmServer.cpp PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
   target_include_directories(programs PUBLIC ${PROJECT_SOURCE_DIR}/programs)
   target_link_libraries(programs PUBLIC PkgConfig::libmnl)
endif()

if(EXISTS ${kiv_main})
   add_executable(kiv ${kiv_main})
   target_include_directories(kiv PRIVATE ${PROJECT_SOURCE_DIR}/programs)
   target_link_options(kiv PRIVATE -Wl,-O1,--gc-sections)
   target_link_libraries(kiv PRIVATE kiv_warnings KivState KivCliSupport $<TARGET_NAME_IF_EXISTS:programs>)
   file(RELATIVE_PATH lib_from_bin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
   set_target_properties(kiv PROPERTIES BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
endif()
