#pragma once

/// How the child that runs the bundle speaks to its parent.

#include "Messages.h"

#include <cstddef>
#include <sys/types.h>

namespace xcodhost {

/// The child's side of the socket to its parent. A process that the bundle forks has no part in it.
class Channel {
public:
    Channel(int socketDescriptor, pid_t ownerProcess) : socket(socketDescriptor), owner(ownerProcess) {}

    /// For a child that this process forked to go on in its name.
    Channel OfThisProcess() const;

    void Send(const Message& message) const;
    /// Tells the alert and waits for the answer: the place of a button, or -1.
    int Ask(const macplatform::Alert& alert) const;

private:
    int socket;
    pid_t owner;
};

/// Writes all bytes to a socket, without the signal that a vanished reader causes elsewhere. False, with
/// errno, when it cannot.
bool SendAll(int socket, const char* bytes, std::size_t size);

} // namespace xcodhost
