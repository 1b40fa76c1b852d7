# The Python module kiv: a package of Python around one extension, which is compiled against the library, the states and
# what answers commands. A build tree has it in lib/python, laid out as it is installed.
set(Python_ROOT_DIR /usr CACHE PATH "Where the Python is that the module is for; the distribution's unless told")
find_package(Python 3.11 COMPONENTS Interpreter Development.Module)
find_package(pybind11 2.10 CONFIG)
if(KIV_SANITIZE OR NOT Python_Development.Module_FOUND OR NOT pybind11_FOUND)
   message(STATUS "No Python module: it wants pybind11 and the headers of Python 3.11, and no sanitizer")
   return()
endif()

set(kiv_python_package ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/python/kiv)
file(GLOB sources CONFIGURE_DEPENDS python/src/*.cpp)
pybind11_add_module(kivPython MODULE NO_EXTRAS ${sources})
set_target_properties(kivPython PROPERTIES OUTPUT_NAME _kiv LIBRARY_OUTPUT_DIRECTORY ${kiv_python_package}
   UNITY_BUILD OFF BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN/../..")
target_include_directories(kivPython PRIVATE ${PROJECT_SOURCE_DIR})
target_link_options(kivPython PRIVATE -Wl,--gc-sections)
target_link_libraries(kivPython PRIVATE kiv_warnings programs KivState KivCliSupport)

file(GLOB kiv_python_files RELATIVE ${PROJECT_SOURCE_DIR}/python/kiv CONFIGURE_DEPENDS python/kiv/*)
foreach(name IN LISTS kiv_python_files)
   add_custom_command(OUTPUT ${kiv_python_package}/${name}
      COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/python/kiv/${name} ${kiv_python_package}/${name}
      DEPENDS python/kiv/${name})
   list(APPEND kiv_python_copies ${kiv_python_package}/${name})
endforeach()
# The stub of the extension, from what is registered in it.
set(kiv_python_stub ${kiv_python_package}/_kiv.pyi)
file(GLOB kiv_stub_sources CONFIGURE_DEPENDS python/stubs/*)
add_custom_command(OUTPUT ${kiv_python_stub}
   COMMAND ${CMAKE_COMMAND} -E env PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/python
      ${Python_EXECUTABLE} ${PROJECT_SOURCE_DIR}/python/stubs/write.py ${kiv_python_stub}
   DEPENDS kivPython ${kiv_python_copies} ${kiv_stub_sources})
add_custom_target(kivPythonPackage ALL DEPENDS ${kiv_python_copies} ${kiv_python_stub})

install(TARGETS kivPython DESTINATION ${CMAKE_INSTALL_LIBDIR}/python/kiv)
install(DIRECTORY python/kiv DESTINATION ${CMAKE_INSTALL_LIBDIR}/python)
install(FILES ${kiv_python_stub} DESTINATION ${CMAKE_INSTALL_LIBDIR}/python/kiv)
