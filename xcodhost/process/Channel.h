#pragma once

/// Declares the connection through which the child process that runs the bundle sends messages to its parent
/// process.

#include "Messages.h"

#include <cstddef>
#include <sys/types.h>

namespace xcodhost {

/// The child's end of the socket. The object does not own the descriptor. In a process other than the owner,
/// for example in a process that the bundle has forked, `Send` does nothing and `Ask` returns -1.
class Channel {
public:
    Channel(int socketDescriptor, pid_t ownerProcess) : socket(socketDescriptor), owner(ownerProcess) {}

    /// Returns the same connection with the calling process as its owner. A child that continues the work of
    /// the owner needs this connection.
    Channel OfThisProcess() const;

    /// Sends a message. Ends the process with the exit status 70 if the parent cannot receive the message.
    void Send(const Message& message) const;
    /// Sends the alert and waits for the answer. Returns the index of the chosen button, or -1 if the alert
    /// was not shown. Ends the process with the exit status 70 if the connection fails.
    int Ask(const macplatform::Alert& alert) const;

private:
    int socket;
    pid_t owner;
};

/// Sends all bytes to a socket. Returns false and sets errno after an error. Does not raise SIGPIPE.
bool SendAll(int socket, const char* bytes, std::size_t size);

} // namespace xcodhost
