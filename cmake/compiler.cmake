# Compiler settings, as interface targets that the library, its tests and its benchmarks share.

# Numeric contract: the same source gives the same bits on every machine.
#  -ffp-contract=off      a*b+c is rounded twice; fusing it would change more than half of all results
#  -fno-math-errno        lets sqrtf become an instruction; changes no value
#  -fno-trapping-math     lets comparisons become vector selects; changes no value
#  -fno-builtin-*         keeps each call a call of the function that is written: compilers may otherwise
#                         turn pow(10, x) into exp10(x), powf(x, 0.5) into sqrtf(x), or join sinf(x) and
#                         cosf(x) into one other function
add_library(sorvo_numeric INTERFACE)
target_compile_options(sorvo_numeric INTERFACE
    -ffp-contract=off
    -fno-math-errno
    -fno-trapping-math
    -fno-builtin-pow
    -fno-builtin-powf
    -fno-builtin-sinf
    -fno-builtin-cosf)

add_library(sorvo_warnings INTERFACE)
target_compile_options(sorvo_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wdouble-promotion)

# Checks that the C library and the compiler can add for the library at no measurable cost. Sanitizers
# bring checks of their own, and fortified functions would hide accesses from them.
add_library(sorvo_hardening INTERFACE)
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_compile_options(sorvo_hardening INTERFACE
        -fstack-protector-strong
        "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()
