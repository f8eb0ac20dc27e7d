#pragma once

/// Handles SIGINT, SIGTERM and SIGHUP: an interrupted run kills its children and removes its scratch
/// directories before the tool ends.

#include <csignal>

namespace xcodhost {

/// Thrown after one of the signals has arrived. After the unwinding `main` ends the process with the signal.
struct Interrupted {
    int signal;
};

/// Blocks the three signals. The destructor restores the signal mask. A signal that the caller of the tool
/// ignores stays ignored.
class Interruption {
public:
    /// Throws ToolFault.
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    /// Returns a descriptor that is readable after a signal has arrived.
    int Descriptor() const { return descriptor; }
    /// Throws Interrupted if a signal has arrived.
    void Check() const;
    /// Unblocks all signals in a forked child and gives every signal its default effect.
    void LiftInChild() const;

private:
    sigset_t oldMask{};
    int descriptor;
};

/// Sets the effect of a signal in this process: SIG_DFL or SIG_IGN.
void SetSignalEffect(int signal, void (*effect)(int));

/// Ends the process with the default effect of the signal.
[[noreturn]] void DieOf(int signal);

} // namespace xcodhost
