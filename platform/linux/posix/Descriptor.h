#pragma once

#include <unistd.h>

namespace macplatform {

/// Owns an open file descriptor, or nothing (-1). The destructor closes the descriptor.
class Descriptor {
public:
    explicit Descriptor(int d = -1) : descriptor(d) {}
    Descriptor(Descriptor&& other) noexcept : descriptor(other.descriptor) { other.descriptor = -1; }
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() {
        if (descriptor >= 0) close(descriptor);
    }
    int Get() const { return descriptor; }
    explicit operator bool() const { return descriptor >= 0; }

private:
    int descriptor;
};

} // namespace macplatform
