# Compiles the formulas again in ways that must not change a bit and compares what they count:
# optimisation levels, a newer instruction set (whose fused operations must stay unused) and, where
# it is installed, the other compiler.
set(FORMULA_BITS_SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/formula_bits.cpp
  ${PROJECT_SOURCE_DIR}/compute/exact_trig.cpp ${PROJECT_SOURCE_DIR}/compute/formulas.cpp
  ${PROJECT_SOURCE_DIR}/compute/rounded_trig.cpp)
set(FORMULA_BITS_PROGRAMS)

function(formula_bits_variant name)
  add_executable(formula_bits_${name} ${FORMULA_BITS_SOURCES})
  target_link_libraries(formula_bits_${name} PRIVATE tessary_options)
  target_compile_options(formula_bits_${name} PRIVATE ${ARGN})
  set(FORMULA_BITS_PROGRAMS ${FORMULA_BITS_PROGRAMS} $<TARGET_FILE:formula_bits_${name}>
    PARENT_SCOPE)
endfunction()

formula_bits_variant(o0 -O0)
formula_bits_variant(o1 -O1)
formula_bits_variant(o3 -O3)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  include(CheckCXXSourceRuns)
  set(CMAKE_REQUIRED_FLAGS "")
  check_cxx_source_runs("int main() { return !(__builtin_cpu_supports(\"avx2\") &&
    __builtin_cpu_supports(\"fma\")); }" TESSARY_CPU_HAS_FMA)
  if(TESSARY_CPU_HAS_FMA)
    formula_bits_variant(o3_fma -O3 -mavx2 -mfma)
  endif()
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  find_program(TESSARY_OTHER_CXX clang++)
else()
  find_program(TESSARY_OTHER_CXX g++)
endif()
set(FORMULA_BITS_OTHERS)
if(TESSARY_OTHER_CXX)
  foreach(level O0 O3)
    set(program ${CMAKE_CURRENT_BINARY_DIR}/formula_bits_other_${level})
    add_custom_command(OUTPUT ${program}
      COMMAND ${TESSARY_OTHER_CXX} -std=c++20 -${level} -ffp-contract=off -I${PROJECT_SOURCE_DIR}
        ${FORMULA_BITS_SOURCES} -o ${program}
      DEPENDS ${FORMULA_BITS_SOURCES} ${PROJECT_SOURCE_DIR}/compute/formulas.h
        ${PROJECT_SOURCE_DIR}/compute/rules.h ${PROJECT_SOURCE_DIR}/compute/complex.h
        ${PROJECT_SOURCE_DIR}/compute/stop_flag.h ${PROJECT_SOURCE_DIR}/compute/quick_trig.h
        ${PROJECT_SOURCE_DIR}/compute/trig_tables.h
      COMMENT "Compiling the formulas with ${TESSARY_OTHER_CXX} -${level}")
    list(APPEND FORMULA_BITS_OTHERS ${program})
  endforeach()
  add_custom_target(formula_bits_others ALL DEPENDS ${FORMULA_BITS_OTHERS})
  list(APPEND FORMULA_BITS_PROGRAMS ${FORMULA_BITS_OTHERS})
endif()

add_test(NAME FormulaBits.AreTheSameHoweverTheyAreCompiled
  COMMAND ${CMAKE_COMMAND} "-DPROGRAMS=${FORMULA_BITS_PROGRAMS}"
    -P ${CMAKE_CURRENT_SOURCE_DIR}/compare_formula_bits.cmake)

# The C library picks its variants of functions by processor, so other processors are asked, too.
find_program(TESSARY_QEMU qemu-x86_64)
if(TESSARY_QEMU AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND NOT TESSARY_SANITIZE)
  add_test(NAME FormulaBits.AreTheSameOnEveryProcessor
    COMMAND ${CMAKE_COMMAND} "-DPROGRAMS=$<TARGET_FILE:formula_bits_o3>"
      "-DEMULATOR=${TESSARY_QEMU}" "-DPROCESSORS=qemu64;Nehalem;Haswell;max"
      -P ${CMAKE_CURRENT_SOURCE_DIR}/compare_formula_bits.cmake)
endif()
