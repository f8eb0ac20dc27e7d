#include "Channel.h"

#include <cerrno>
#include <cstdint>
#include <sys/socket.h>
#include <unistd.h>

namespace xcodhost {

bool SendAll(int socket, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t count = send(socket, bytes, size, MSG_NOSIGNAL);
        if (count >= 0) {
            bytes += count;
            size -= static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

Channel Channel::OfThisProcess() const { return {socket, getpid()}; }

void Channel::Send(const Message& message) const {
    if (getpid() != owner) return;
    const std::string line = Encode(message);
    if (!SendAll(socket, line.data(), line.size())) _exit(70); // the parent has gone
}

int Channel::Ask(const macplatform::Alert& alert) const {
    if (getpid() != owner) return -1;
    Send(alert);
    std::int32_t button = -1;
    char* const bytes = reinterpret_cast<char*>(&button);
    for (std::size_t got = 0; got < sizeof button;) {
        const ssize_t count = recv(socket, bytes + got, sizeof button - got, 0);
        if (count > 0) {
            got += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            _exit(70);
        }
    }
    return button;
}

} // namespace xcodhost
