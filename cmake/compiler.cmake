# Compiler settings, as interface targets that the library, its tests and its benchmarks share.

include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# Numeric contract: the same source gives the same bits on every machine, and inside every project. These
# flags come after those of a parent project and take back what it may have asked for.
#  -fno-fast-math ...     a value is computed in the written order, with infinities, NaN and signed zeros
#  -ffp-contract=off      a*b+c is rounded twice; fusing it would change more than half of all results
#  -fno-math-errno        lets sqrtf become an instruction; changes no value
#  -fno-trapping-math     lets comparisons become vector selects; changes no value
#  -fno-builtin-*         keeps each call a call of the function that is written: compilers may otherwise
#                         turn pow(10, x) into exp10(x), powf(x, 0.5) into sqrtf(x), or join sinf(x) and
#                         cosf(x) into one other function
set(no_fast_math -fno-fast-math -fno-unsafe-math-optimizations)
add_library(sorvo_numeric INTERFACE)
target_compile_options(sorvo_numeric INTERFACE
    ${no_fast_math}
    -ffp-contract=off
    -fno-math-errno
    -fno-trapping-math
    "$<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-overriding-t-option>"  # the line above, after -fno-fast-math
    -fno-builtin-pow
    -fno-builtin-powf
    -fno-builtin-sinf
    -fno-builtin-cosf)
# Given to the linker, -ffast-math and -Ofast would add start-up code that flushes denormals in every process
# that loads the library.
target_link_options(sorvo_numeric INTERFACE -O2 ${no_fast_math})

add_library(sorvo_warnings INTERFACE)
target_compile_options(sorvo_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wdouble-promotion)

# Checks and protections that the C library, the compiler and the linker can add at no measurable cost, each
# where it exists. Sanitizers bring checks of their own, and fortified functions would hide accesses from them;
# their runtimes are resolved by the executable, which -z defs would not accept.
add_library(sorvo_hardening INTERFACE)
function(sorvo_harden kind flag)
    string(MAKE_C_IDENTIFIER "SORVO_AUDIO_HAS_${flag}" has_flag)
    if(kind STREQUAL compile)
        check_cxx_compiler_flag("${flag}" ${has_flag})
    else()
        check_linker_flag(CXX "${flag}" ${has_flag})
    endif()
    if(${has_flag} AND kind STREQUAL compile)
        target_compile_options(sorvo_hardening INTERFACE "${flag}")
    elseif(${has_flag})
        target_link_options(sorvo_hardening INTERFACE "${flag}")
    endif()
endfunction()
if(EMSCRIPTEN)
    return()  # WebAssembly is checked by whoever runs it; the flags are accepted, and then do nothing or fail
endif()
sorvo_harden(compile -fcf-protection)
foreach(keyword IN ITEMS relro now noexecstack)
    sorvo_harden(link "LINKER:-z,${keyword}")
endforeach()
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    sorvo_harden(compile -fstack-clash-protection)
    sorvo_harden(compile -fstack-protector-strong)
    sorvo_harden(link "LINKER:-z,defs")
    target_compile_options(sorvo_hardening INTERFACE
        "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()
