# One set of compiler rules for every target of the project.
set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

add_library(vesk_compiler INTERFACE)
# The motion is specified to the last bit in places, so a fused multiply-add, which rounds once
# instead of twice, must not creep in on the processors that have one.
target_compile_options(vesk_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
  -Woverloaded-virtual -Wnull-dereference -Wformat=2 -Wimplicit-fallthrough
  -ffp-contract=off
  # A designated initializer leaves the fields it does not name at their defaults on purpose.
  -Wno-missing-field-initializers)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports false positives from the standard library's own inlined code at -O2.
  target_compile_options(vesk_compiler INTERFACE
    -Wno-null-dereference -Wno-maybe-uninitialized -Wno-restrict -Wno-stringop-overread)
endif()
if(VESK_WARNINGS_AS_ERRORS)
  target_compile_options(vesk_compiler INTERFACE -Werror)
endif()
if(VESK_SANITIZE)
  target_compile_options(vesk_compiler INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(vesk_compiler INTERFACE -fsanitize=address,undefined)
endif()
if(VESK_FUZZ)
  target_compile_options(vesk_compiler INTERFACE -fsanitize=fuzzer-no-link)
endif()
