#pragma once

#include <unistd.h>
#include <utility>

namespace macplatform {

/// Owns an open file descriptor, or is empty. The destructor closes the descriptor.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes ownership of an open descriptor. The object is empty if the number is negative, which is the
    /// result of a failed call.
    explicit FileDescriptor(int openDescriptor) : descriptor(openDescriptor) {}
    ///@{
    /// Moves the ownership. An assignment exchanges the descriptors of the two objects.
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor, other.descriptor);
        return *this;
    }
    ///@}
    ~FileDescriptor() { Close(); }

    int Get() const { return descriptor; } ///< Returns the descriptor, or a negative number.
    explicit operator bool() const { return descriptor >= 0; } ///< True if there is a descriptor.
    /// Closes the descriptor if there is one. The object is then empty. Ignores errors.
    void Close() {
        if (descriptor >= 0) close(std::exchange(descriptor, -1));
    }

private:
    int descriptor = -1;
};

} // namespace macplatform
