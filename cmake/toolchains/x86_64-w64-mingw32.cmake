# Toolchain: 64-bit Windows by Debian's g++-mingw-w64-x86-64-posix; Wine runs what it makes.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR env "WINEPREFIX=${CMAKE_BINARY_DIR}/wine" WINEDEBUG=-all /usr/lib/wine/wine64)
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)  # of the C++ runtime, which Windows does not have
