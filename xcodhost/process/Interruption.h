#pragma once

/// Declares the handling of SIGINT, SIGTERM and SIGHUP: an interrupted run kills its children and removes its
/// temporary directories before the tool ends.

#include <csignal>

namespace xcodhost {

/// Thrown after one of the signals has arrived. `main` catches the exception and ends the process with the
/// signal.
struct Interrupted {
    int signal;
};

/// Blocks the three signals. The destructor restores the signal mask. A signal that was ignored when the tool
/// started is still ignored.
class Interruption {
public:
    /// Blocks the signals. Throws ToolFault.
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    /// Returns a descriptor that is readable after a signal has arrived.
    int Descriptor() const { return descriptor; }
    /// Throws Interrupted if a signal has arrived.
    void Check() const;
    /// Unblocks all signals and gives every signal its default effect. A forked child calls this function.
    void ResetInChild() const;

private:
    sigset_t oldMask{};
    int descriptor;
};

/// Sets the effect of a signal in this process: SIG_DFL or SIG_IGN.
void SetSignalEffect(int signal, void (*effect)(int));

/// Ends the process with the default effect of the signal.
[[noreturn]] void EndBySignal(int signal);

} // namespace xcodhost
