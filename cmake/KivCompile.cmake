# How everything is compiled: the language, the warnings, the sanitizers.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
if(NOT CMAKE_BUILD_TYPE)
   set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

add_library(kiv_warnings INTERFACE)
target_compile_options(kiv_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
   # This compiler sees overlapping copies in plain `"text" + std::string` once it optimises.
   target_compile_options(kiv_warnings INTERFACE -Wno-restrict)
endif()

if(KIV_SANITIZE STREQUAL "address")
   set(kiv_sanitize -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
elseif(KIV_SANITIZE STREQUAL "fuzzer")
   set(kiv_sanitize -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
elseif(KIV_SANITIZE STREQUAL "thread")
   set(kiv_sanitize -fsanitize=thread -fno-omit-frame-pointer)
elseif(KIV_SANITIZE)
   message(FATAL_ERROR "KIV_SANITIZE is address, thread or fuzzer, not ${KIV_SANITIZE}")
endif()
add_compile_options(${kiv_sanitize})
add_link_options(${kiv_sanitize})

# The objects carry machine code beside what link-time optimisation reads: the library and its programs are optimised as
# a whole, while the many test binaries link the same objects in a moment.
if(KIV_LTO AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
   set(kiv_lto_compile -flto=auto -ffat-lto-objects)
   set(kiv_lto_link -flto=auto)
   set(kiv_no_lto_link -fno-lto)
endif()
