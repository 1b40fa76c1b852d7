# One fuzzer for each place where foreign bytes come in, with clang's libFuzzer. The tests replay the same targets.
function(kiv_fuzzer target source)
   add_executable(fuzz-${target} tests/fuzz/Fuzzer.cpp tests/fuzz/${source})
   target_compile_definitions(fuzz-${target} PRIVATE KIV_FUZZ_TARGET=${target})
   kiv_link_floors(fuzz-${target} ${ARGN})
   target_link_options(fuzz-${target} PRIVATE -fsanitize=fuzzer)
endfunction()

kiv_floors_up_to(Vault floors)
kiv_fuzzer(table TableTarget.cpp ${floors})
foreach(target snapshot commandLine rtnetlink)
   kiv_fuzzer(${target} TextTargets.cpp ${kiv_floors})
   target_link_libraries(fuzz-${target} PRIVATE programs KivStateObjects)
endforeach()
