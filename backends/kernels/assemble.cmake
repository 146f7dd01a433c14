# Makes the three program texts from the shared sources and writes them as C++ string constants:
#   cmake -DSOURCES="complex.cl;rules.cl;do_work.cl" -DOUTPUT=embedded.cpp -P assemble.cmake
# The texts differ in their first line, the number type, the names that carry the type and the order
# of one sum, which is what the tokens REAL, CREAL and HERMITE_SUM of the sources stand for.
#
# The second line of each keeps a device from rounding a product and a sum once, which would draw
# pixels of the rules that are made of them in other colours than the CPU.

set(shared "")
foreach(source IN LISTS SOURCES)
  file(READ "${source}" text)
  string(APPEND shared "\n${text}")
endforeach()

set(cpp "#include \"backends/kernels/embedded.h\"\n")

function(add_text name extension type suffix hermite_sum)
  set(text "#pragma OPENCL EXTENSION ${extension}: enable\n#pragma OPENCL FP_CONTRACT OFF\n${shared}")
  string(REPLACE "CREAL" "C${suffix}" text "${text}")
  string(REPLACE "REAL" "${type}" text "${text}")
  string(REPLACE "HERMITE_SUM" "${hermite_sum}" text "${text}")
  set(cpp "${cpp}\nconst char ${name}[] = R\"CL(${text})CL\";\n" PARENT_SCOPE)
endfunction()

add_text(kernel_single_embedded cl_khr_fp64 float float "add(h, c)")
add_text(kernel_double_mac_embedded cl_APPLE_fp64_basic_ops double Double "add(c, h)")
add_text(kernel_double_embedded cl_khr_fp64 double Double "add(c, h)")

file(WRITE "${OUTPUT}" "${cpp}")
