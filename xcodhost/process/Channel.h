#pragma once

/// The connection through which the child process that runs the bundle reports to its parent process.

#include "Messages.h"

#include <cstddef>
#include <sys/types.h>

namespace xcodhost {

/// The child's end of the socket. The object does not own the descriptor. In a process that the bundle forks,
/// `Send` and `Ask` do nothing.
class Channel {
public:
    Channel(int socketDescriptor, pid_t ownerProcess) : socket(socketDescriptor), owner(ownerProcess) {}

    /// Returns the same connection with the calling process as its owner. For a child that continues the work
    /// of the owner.
    Channel OfThisProcess() const;

    /// Sends a message. Ends the process with 70 if the parent cannot receive the message.
    void Send(const Message& message) const;
    /// Sends the alert and waits for the answer. Returns the index of the chosen button, or -1 if the alert
    /// was not shown.
    int Ask(const macplatform::Alert& alert) const;

private:
    int socket;
    pid_t owner;
};

/// Sends all bytes to a socket. Raises no SIGPIPE. Returns false and sets errno on an error.
bool SendAll(int socket, const char* bytes, std::size_t size);

} // namespace xcodhost
