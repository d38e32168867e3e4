# Compares the names that the shared library exports with those that the header declares. For Windows LIBRARY is the
# import library, whose own names begin with an underscore.
cmake_minimum_required(VERSION 3.22)

if(LIBRARY MATCHES "\\.dll\\.a$")
    set(kind --extern-only)
else()
    set(kind -D)
endif()
execute_process(COMMAND "${NM}" ${kind} --defined-only --format=posix "${LIBRARY}"
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "(^|\n)[^_ \n][^ \n]* [A-Za-z] [^\n]*" lines "${symbols}")
list(TRANSFORM lines REPLACE "^\n| .*" "" OUTPUT_VARIABLE exported)

file(READ "${HEADER}" text)
string(REGEX MATCHALL "SORVO_AUDIO_API int sorvoAudio[A-Za-z0-9]+" declarations "${text}")
list(TRANSFORM declarations REPLACE ".* " "" OUTPUT_VARIABLE declared)

list(LENGTH declared declared_n)
if(NOT declared_n EQUAL 22)
    message(SEND_ERROR "the header declares ${declared_n} functions, not 22")
endif()
list(SORT exported)
list(SORT declared)
if(NOT exported STREQUAL declared)
    message(SEND_ERROR "exported: ${exported}\ndeclared: ${declared}")
endif()
