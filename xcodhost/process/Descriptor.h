#pragma once

#include <unistd.h>
#include <utility>

namespace xcodhost {

/// Owns a file descriptor. The destructor closes the descriptor. -1 stands for no descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : descriptor(number) {}
    Descriptor(Descriptor&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(descriptor, other.descriptor);
        return *this;
    }
    ~Descriptor() { Close(); }

    int Number() const { return descriptor; }
    void Close() {
        if (descriptor >= 0) close(std::exchange(descriptor, -1));
    }

private:
    int descriptor = -1;
};

} // namespace xcodhost
