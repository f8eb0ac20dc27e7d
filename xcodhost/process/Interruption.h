#pragma once

/// SIGINT, SIGTERM and SIGHUP as something to wait for, so that a run that is broken off ends its child and
/// removes its scratch folders first.

#include <csignal>

namespace xcodhost {

/// Thrown when one of the signals came; unwinding cleans up, then `main` dies of the signal.
struct Interrupted {
    int signal;
};

/// Holds the three signals back for as long as it lives.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    int Descriptor() const { return descriptor; } ///< Readable when a signal came.
    /// Throws Interrupted when a signal came.
    void Check() const;
    /// For a child after fork: lets the signals through again, all with their default effect.
    void LiftInChild() const;

private:
    sigset_t oldMask{};
    int descriptor;
};

/// SIG_DFL or SIG_IGN from now on.
void SetSignalEffect(int signal, void (*effect)(int));

/// Ends the process by the signal's default effect.
[[noreturn]] void DieOf(int signal);

} // namespace xcodhost
