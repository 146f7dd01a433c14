# What makes a mistake harder to use, in every build that is optimised: tests/house/test_hardening.py
# reads it from the programs. Sanitizers bring checks of their own, which these would hide.
include(CheckCXXCompilerFlag)

# Indirect jumps lead to marked places alone: on x86 by endbr64, on ARM by bti.
check_cxx_compiler_flag(-fcf-protection=full TESSARY_HAS_CF_PROTECTION)
check_cxx_compiler_flag(-mbranch-protection=standard TESSARY_HAS_BRANCH_PROTECTION)

function(tessary_harden target)
  # What goes into a program is compiled for its place in one: -fPIC instead would keep functions from
  # being drawn into each other. Plug-ins of the tests say -fPIC themselves.
  set(type $<TARGET_PROPERTY:TYPE>)
  set(plugin $<OR:$<STREQUAL:${type},SHARED_LIBRARY>,$<STREQUAL:${type},MODULE_LIBRARY>>)
  target_compile_options(${target} INTERFACE
    $<$<NOT:${plugin}>:-fPIE>
    -fstack-protector-strong
    $<$<BOOL:${TESSARY_HAS_CF_PROTECTION}>:-fcf-protection=full>
    $<$<BOOL:${TESSARY_HAS_BRANCH_PROTECTION}>:-mbranch-protection=standard>
    # Without optimisation the C library warns that it cannot check. Compilers of some distributions
    # bring a level of their own, and a second one is a warning too.
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
  target_link_options(${target} INTERFACE
    $<$<STREQUAL:${type},EXECUTABLE>:-pie>
    -Wl,-z,relro,-z,now,-z,noexecstack)
endfunction()
