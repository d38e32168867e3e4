# Toolchain: WebAssembly by Debian's emscripten; Node.js runs what it makes. Without exceptions of its own kind
# WebAssembly could not turn the library's into statuses.
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
set(CMAKE_C_FLAGS_INIT "-fwasm-exceptions")
set(CMAKE_CXX_FLAGS_INIT "-fwasm-exceptions")
