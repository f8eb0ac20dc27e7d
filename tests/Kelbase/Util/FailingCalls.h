#pragma once

#include <cstddef>

/// While one lives, call `number` (from 0) of those below fails with `errorNumber`: malloc, and the
/// file calls of the C library that code linked into this program makes. A call that moves bytes moves half
/// of them first; a failing fclose closes. A program links FailingCalls.cpp and is linked with the options
/// that failing_calls names.
class FailingCall {
public:
    FailingCall(unsigned number, int errorNumber);
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;
    ~FailingCall();

    /// "fopen", or "malloc"; null as long as none failed.
    const char* Name() const;
};

/// Blocks that malloc and operator new gave and nobody gave back.
std::size_t LiveBlocks();
