# One interface target carries what every translation unit of the project is compiled with.
add_library(tessary_options INTERFACE)
target_compile_features(tessary_options INTERFACE cxx_std_20)
target_include_directories(tessary_options INTERFACE ${PROJECT_SOURCE_DIR})

# Pictures are compared byte for byte: a fused multiply-add rounds once where the rules round
# twice, so contraction is off everywhere and no fast-math flag may ever appear here.
target_compile_options(tessary_options INTERFACE -ffp-contract=off)

option(TESSARY_WERROR "Treat warnings as errors" OFF)
target_compile_options(tessary_options INTERFACE -Wall -Wextra -Wconversion -Wshadow)
if(TESSARY_WERROR)
  target_compile_options(tessary_options INTERFACE -Werror)
endif()

set(TESSARY_SANITIZE "" CACHE STRING "Value for -fsanitize=, e.g. address,undefined or thread")
if(TESSARY_SANITIZE)
  target_compile_options(tessary_options INTERFACE
    -fsanitize=${TESSARY_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tessary_options INTERFACE -fsanitize=${TESSARY_SANITIZE})
else()
  include(cmake/TessaryHardening.cmake)
  tessary_harden(tessary_options)
endif()

# The containers of the standard library check their indices.
target_compile_definitions(tessary_options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

option(TESSARY_COVERAGE "Count which lines and branches run (gcc)" OFF)
if(TESSARY_COVERAGE)
  # Workers count the same lines at the same time.
  target_compile_options(tessary_options INTERFACE --coverage -fprofile-update=prefer-atomic)
  target_link_options(tessary_options INTERFACE --coverage)
endif()

# Instruction sets that are not compiled, as an expression of Highway's HWY_* bits. Sanitizer builds
# skip some: instrumented, each takes minutes. What stands in the cache is what the user said and
# nothing else, so a folder that is configured again for a sanitizer, or without one, skips what it
# would have skipped from the start.
set(TESSARY_SKIPPED_TARGETS "" CACHE STRING
  "Instruction sets that are left out; where empty, some in sanitizer builds")
set(SKIPPED_TARGETS "${TESSARY_SKIPPED_TARGETS}")
if(TESSARY_SANITIZE AND NOT SKIPPED_TARGETS)
  set(SKIPPED_TARGETS "(HWY_SSSE3|HWY_SSE4|HWY_AVX2)")
endif()
