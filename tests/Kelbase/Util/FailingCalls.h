#pragma once

/// Injected failures of allocations and of file calls of the C library, and a count of allocated blocks.

#include <cstddef>

/// Makes one call fail with `errorNumber`: the call with this number, from 0, of malloc and of the file calls
/// that the code in this program makes. The destructor ends the injection. A failing fread or fwrite
/// transfers half of its elements. A failing fclose closes the file. The program must contain
/// FailingCalls.cpp and must be linked with the options in the CMake variable failing_calls.
class FailingCall {
public:
    FailingCall(unsigned number, int errorNumber);
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;
    ~FailingCall();

    /// Returns the name of the failed call, for example "fopen". Returns null if no call has failed yet.
    const char* Name() const;
};

/// Returns the number of blocks from malloc and operator new that are not freed.
std::size_t LiveBlocks();
