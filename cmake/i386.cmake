# Toolchain for 32-bit x86 on a 64-bit machine: 4-byte long and pointers, SSE2 arithmetic and 64-bit file offsets, as on the Mac.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i386)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse -D_FILE_OFFSET_BITS=64")
set(CMAKE_C_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT}")
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_FIND_ROOT_PATH /)
# The machine that builds the programs can run them.
set(CMAKE_CROSSCOMPILING_EMULATOR "")

execute_process(
    COMMAND ${CMAKE_COMMAND} -E echo "#include <string>\nint main() { return int(std::string().size()); }"
    COMMAND ${CMAKE_CXX_COMPILER} -m32 -x c++ - -o /dev/null
    RESULT_VARIABLE cannot_compile OUTPUT_QUIET ERROR_QUIET)
if(cannot_compile)
    message(FATAL_ERROR "The preset i386 needs a compiler for 32-bit programs (package g++-multilib). Install it with:\n"
        "  apt-get install g++-multilib")
endif()
