# One GoogleTest binary per folder of tests/: tests/X/**.cpp -> XTest. What is in tests/support they all link.
find_package(GTest REQUIRED)
include(GoogleTest)
if(NOT TARGET PkgConfig::simdjson)
   pkg_check_modules(simdjson REQUIRED IMPORTED_TARGET simdjson)
endif()

# Optimising the tests' own code would take most of the time of a build and gain little; what they test is optimised as
# ever. They share one precompiled header, for which they must be compiled alike.
function(kiv_test_target target)
   set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
   target_include_directories(${target} PRIVATE
      ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/platform ${PROJECT_SOURCE_DIR}/tests)
   target_compile_definitions(${target} PRIVATE KIV_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
      KIV_PROGRAM="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kiv")
   target_compile_options(${target} PRIVATE -O0 $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)  # the latter for ccache
   target_link_libraries(${target} PRIVATE kiv_warnings GTest::gtest_main PkgConfig::simdjson)
endfunction()

file(GLOB sources CONFIGURE_DEPENDS tests/support/*.cpp)
add_library(testsupport STATIC ${sources})
kiv_test_target(testsupport)
target_precompile_headers(testsupport PRIVATE tests/support/Testing.h)

file(GLOB folders RELATIVE ${PROJECT_SOURCE_DIR}/tests CONFIGURE_DEPENDS tests/*)
list(REMOVE_ITEM folders faults install support)
foreach(folder IN LISTS folders)
   file(GLOB_RECURSE sources CONFIGURE_DEPENDS tests/${folder}/*.cpp)
   if(NOT sources)
      continue()
   endif()
   set(test ${folder}Test)
   add_executable(${test} ${sources})
   set_target_properties(${test} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
   kiv_test_target(${test})
   target_precompile_headers(${test} REUSE_FROM testsupport)
   kiv_floors_up_to(${folder} floors)
   kiv_link_floors(${test} ${floors})
   target_link_libraries(${test} PRIVATE testsupport)
   if(NOT folder STREQUAL "Kiv" AND NOT IS_DIRECTORY ${PROJECT_SOURCE_DIR}/platform/${folder})
      if(TARGET programs)
         target_link_libraries(${test} PRIVATE programs KivStateObjects)
      endif()
      if(TARGET kiv)
         add_dependencies(${test} kiv)
      endif()
   endif()
   gtest_discover_tests(${test} TEST_PREFIX ${folder}/ DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endforeach()

# Installs this build tree for a stranger and builds that stranger's program against it.
add_test(NAME install COMMAND ${PROJECT_SOURCE_DIR}/tests/install/run ${PROJECT_BINARY_DIR} ${CMAKE_CXX_COMPILER}
   ${CMAKE_INSTALL_LIBDIR} ${kiv_sanitize})
set_tests_properties(install PROPERTIES TIMEOUT 300)

# What may happen to kiv, in short; time limits are stretched where everything is slower.
find_package(Python3 COMPONENTS Interpreter)
if(TARGET kiv AND Python3_FOUND)
   set(patience $<IF:$<BOOL:${KIV_SANITIZE}>,40,$<IF:$<CONFIG:Release>,10,20>>)
   add_test(NAME faults COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/tests/faults/run $<TARGET_FILE:kiv> --short
      --patience ${patience})
   set_tests_properties(faults PROPERTIES TIMEOUT 600)
endif()

# The Python module, as it lies in the build tree.
if(TARGET kivPython)
   execute_process(COMMAND ${Python_EXECUTABLE} -c "import pytest, mypy" RESULT_VARIABLE kiv_no_pytest ERROR_QUIET)
   if(kiv_no_pytest)
      message(STATUS "No tests of the Python module: they want pytest and mypy")
   else()
      add_test(NAME python COMMAND ${Python_EXECUTABLE} -m pytest -q -p no:cacheprovider ${PROJECT_SOURCE_DIR}/tests/python)
      set_tests_properties(python PROPERTIES TIMEOUT 300 ENVIRONMENT
         "PYTHONPATH=${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/python;PYTHONDONTWRITEBYTECODE=1;KIV_SOURCE_DIR=${PROJECT_SOURCE_DIR};KIV_PROGRAM=${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kiv")
   endif()
endif()
