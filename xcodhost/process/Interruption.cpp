#include "Interruption.h"

#include "ExitStatus.h"

#include <cstdlib>
#include <sys/signalfd.h>
#include <unistd.h>

namespace xcodhost {

Interruption::Interruption() : descriptor(-1) {
    sigset_t held;
    sigemptyset(&held);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        // A signal that the caller ignores (nohup) is not blocked: signalfd would report it.
        if (action.sa_handler != SIG_IGN) sigaddset(&held, number);
    }
    descriptor = signalfd(-1, &held, SFD_NONBLOCK | SFD_CLOEXEC);
    if (descriptor < 0) throw ToolFault::FromErrno("signals: cannot create a descriptor");
    sigprocmask(SIG_BLOCK, &held, &oldMask);
}

Interruption::~Interruption() {
    sigprocmask(SIG_SETMASK, &oldMask, nullptr);
    close(descriptor);
}

void Interruption::Check() const {
    signalfd_siginfo arrived{};
    if (read(descriptor, &arrived, sizeof arrived) == static_cast<ssize_t>(sizeof arrived)) {
        throw Interrupted{static_cast<int>(arrived.ssi_signo)};
    }
}

void Interruption::ResetInChild() const {
    for (int number = 1; number < NSIG; ++number) {
        SetSignalEffect(number, SIG_DFL); // fails for SIGKILL, SIGSTOP and the signals of the C library
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void SetSignalEffect(int signal, void (*effect)(int)) {
    struct sigaction action {};
    action.sa_handler = effect;
    sigaction(signal, &action, nullptr);
}

void EndBySignal(int signal) {
    SetSignalEffect(signal, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    kill(getpid(), signal);
    _exit(128 + signal);
}

} // namespace xcodhost
