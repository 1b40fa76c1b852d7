# One fuzzer for each place where foreign bytes come in, with clang's libFuzzer. The tests replay the same targets.
foreach(target table snapshot commandLine rtnetlink)
   add_executable(fuzz-${target} tests/fuzz/Fuzzer.cpp tests/fuzz/TableTarget.cpp tests/fuzz/OtherTargets.cpp)
   target_compile_definitions(fuzz-${target} PRIVATE KIV_FUZZ_TARGET=${target})
   target_include_directories(fuzz-${target} PRIVATE ${PROJECT_SOURCE_DIR}/programs)
   kiv_link_floors(fuzz-${target} ${kiv_floors})
   target_link_libraries(fuzz-${target} PRIVATE programs KivStateObjects PkgConfig::simdjson PkgConfig::libmnl)
   target_link_options(fuzz-${target} PRIVATE -fsanitize=fuzzer)
endforeach()
