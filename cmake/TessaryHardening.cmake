# What makes a mistake harder to use, in every build that is optimised: tests/house/test_hardening.py
# reads it from the programs. Sanitizers bring checks of their own, which these would hide.
include(CheckCXXCompilerFlag)

# Indirect jumps lead to marked places alone: on x86 by endbr64, on ARM by bti. Some compilers accept
# the option of the other family, and warn of it at every file.
check_cxx_compiler_flag(-fcf-protection=full TESSARY_HAS_CF_PROTECTION)
if(TESSARY_HAS_CF_PROTECTION)
  set(TESSARY_MARKED_PLACES -fcf-protection=full)
else()
  check_cxx_compiler_flag(-mbranch-protection=standard TESSARY_HAS_BRANCH_PROTECTION)
  set(TESSARY_MARKED_PLACES $<$<BOOL:${TESSARY_HAS_BRANCH_PROTECTION}>:-mbranch-protection=standard>)
endif()

function(tessary_harden target)
  # What goes into a program is compiled for its place in one: -fPIC instead would keep functions from
  # being drawn into each other. Plug-ins of the tests say -fPIC themselves, and so does the toolkit,
  # which goes into libraries of others.
  set(type $<TARGET_PROPERTY:TYPE>)
  set(plugin $<OR:$<STREQUAL:${type},SHARED_LIBRARY>,$<STREQUAL:${type},MODULE_LIBRARY>>)
  # Without optimisation the C library warns that it cannot check. Tests put functions of their own in
  # the places of its functions, where its checked ones would be in the way.
  set(tests $<PATH:IS_PREFIX,${PROJECT_SOURCE_DIR}/tests,$<TARGET_PROPERTY:SOURCE_DIR>>)
  set(fortified $<NOT:$<OR:$<CONFIG:Debug>,${tests}>>)
  target_compile_options(${target} INTERFACE
    $<$<NOT:$<OR:${plugin},$<BOOL:$<TARGET_PROPERTY:POSITION_INDEPENDENT_CODE>>>>:-fPIE>
    -fstack-protector-strong
    ${TESSARY_MARKED_PLACES}
    # Compilers of some distributions bring a level of their own.
    -U_FORTIFY_SOURCE $<${fortified}:-D_FORTIFY_SOURCE=3>)
  target_link_options(${target} INTERFACE
    $<$<STREQUAL:${type},EXECUTABLE>:-pie>
    -Wl,-z,relro,-z,now,-z,noexecstack)
endfunction()
