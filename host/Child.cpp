#include "Child.h"

#include "Console.h"
#include "ExitStatus.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <exception>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace xcodhost {

namespace {

using Clock = std::chrono::steady_clock;

/// A descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int number) : descriptor(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Close(); }

    int Number() const { return descriptor; }
    void Close() {
        if (descriptor >= 0) close(descriptor);
        descriptor = -1;
    }

private:
    int descriptor;
};

/// Ends the child's whole process group and reaps the child, at the latest when it goes out of scope.
class ChildProcess {
public:
    explicit ChildProcess(pid_t childId)
        : id(childId), process(static_cast<int>(syscall(SYS_pidfd_open, childId, 0))) {}
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() { Reap(); }

    int Descriptor() const { return process.Number(); } ///< Readable once the child has ended.

    /// Kills the group, which does nothing to a child that has ended, and answers the child's status.
    int Reap() {
        if (isReaped) return status;
        kill(-id, SIGKILL);
        kill(id, SIGKILL); // it may not have reached its own group yet
        while (waitpid(id, &status, 0) < 0 && errno == EINTR) {
        }
        isReaped = true;
        return status;
    }

private:
    pid_t id;
    xcodhost::Descriptor process;
    int status = 0;
    bool isReaped = false;
};

/// When the child has run for too long; both clocks can be held.
class Deadlines {
public:
    explicit Deadlines(const ChildLimits& childLimits)
        : limits(childLimits),
          call(Clock::now() + Span(limits.secondsPerCall)),
          run(Clock::now() + Span(limits.secondsPerRun)) {}

    void CallBegins() { call = Clock::now() + Span(limits.secondsPerCall); }
    void Hold(Clock::duration duration) {
        call += duration;
        run += duration;
    }
    bool HavePassed() const { return Clock::now() >= std::min(call, run); }
    double PassedLimit() const { return call <= run ? limits.secondsPerCall : limits.secondsPerRun; }
    /// For poll: never 0 before a deadline has passed.
    int Milliseconds() const {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(std::min(call, run) - Clock::now());
        return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60'000));
    }

private:
    static Clock::duration Span(double seconds) {
        return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }

    ChildLimits limits;
    Clock::time_point call;
    Clock::time_point run;
};

/// Serves one child until it has ended.
class Supervision {
public:
    Supervision(pid_t id, Descriptor& parentSocket, const ChildLimits& childLimits,
                const ChildListener& childListener, const Interruption& pendingSignals)
        : child(id),
          socket(parentSocket),
          limits(childLimits),
          deadlines(childLimits),
          listener(childListener),
          interruption(pendingSignals) {
        if (child.Descriptor() < 0) throw ToolFault::FromErrno("the child process cannot be waited for");
    }

    ChildEnd Serve() {
        while (true) {
            if (deadlines.HavePassed()) return Ended(ChildEnd::Kind::OverTime, 0, deadlines.PassedLimit());
            std::array<pollfd, 3> waits{{{socket.Number(), POLLIN, 0},
                                         {child.Descriptor(), POLLIN, 0},
                                         {interruption.Descriptor(), POLLIN, 0}}};
            if (poll(waits.data(), waits.size(), deadlines.Milliseconds()) < 0 && errno != EINTR) {
                throw ToolFault::FromErrno("the child process cannot be waited for");
            }
            interruption.Check();
            // Looked at before the socket is read: what a child told before its end is then all there.
            const bool hasEnded = waits[1].revents != 0;
            const bool isSound = hasEnded ? ReadRest() : ReadSome();
            if (!isSound) return Ended(ChildEnd::Kind::OverReport, 0, 0);
            if (hasEnded) return EndOf(child.Reap());
        }
    }

private:
    ChildEnd Ended(ChildEnd::Kind kind, int code, double seconds) {
        child.Reap();
        return {kind, code, seconds};
    }

    ChildEnd EndOf(int status) const {
        if (isDone) return {};
        if (WIFSIGNALED(status)) return {ChildEnd::Kind::Signalled, WTERMSIG(status), 0};
        return {ChildEnd::Kind::Exited, WEXITSTATUS(status), 0};
    }

    /// False when the report is too long or broken.
    bool ReadSome() {
        if (socket.Number() < 0) return true;
        const ssize_t count = recv(socket.Number(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        gotBytes = count > 0;
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) socket.Close();
        if (count <= 0) return true;
        received += static_cast<std::size_t>(count);
        pending.append(buffer.data(), static_cast<std::size_t>(count));
        return received <= limits.reportBytes && HandleLines();
    }

    bool ReadRest() {
        do {
            if (!ReadSome()) return false;
        } while (gotBytes && socket.Number() >= 0);
        return true;
    }

    bool HandleLines() {
        std::size_t start = 0;
        for (std::size_t end; (end = pending.find('\n', searched)) != std::string::npos; start = searched) {
            auto message = Decode(std::string_view(pending).substr(start, end - start));
            if (!message) return false;
            Handle(std::move(*message));
            searched = end + 1;
        }
        pending.erase(0, start);
        searched = pending.size(); // a long line comes in many parts; none is searched twice
        return true;
    }

    void Handle(Message&& message) {
        if (auto* alert = std::get_if<macplatform::Alert>(&message)) return Answer(std::move(*alert));
        if (std::holds_alternative<CallBegan>(message)) deadlines.CallBegins();
        if (std::holds_alternative<Done>(message)) isDone = true;
        if (const auto* fault = std::get_if<ChildFault>(&message)) throw ToolFault(fault->text);
        listener.onMessage(std::move(message));
    }

    void Answer(macplatform::Alert&& alert) {
        const Clock::time_point asked = Clock::now();
        const std::int32_t answer = listener.onAlert(std::move(alert));
        deadlines.Hold(Clock::now() - asked);
        // A child that has ended meanwhile needs no answer; its end is seen in the next round.
        SendAll(socket.Number(), reinterpret_cast<const char*>(&answer), sizeof answer);
    }

    ChildProcess child;
    Descriptor& socket;
    const ChildLimits& limits;
    Deadlines deadlines;
    const ChildListener& listener;
    const Interruption& interruption;
    std::array<char, 65536> buffer{};
    std::string pending;      ///< The start of a line, whose end has not come yet.
    std::size_t searched = 0; ///< So much of it holds no line feed.
    std::size_t received = 0;
    bool gotBytes = false;
    bool isDone = false;
};

/// Standard input empty, standard output where standard error goes: the result is the parent's alone to
/// print.
void SettleStreams() {
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing < 0 || dup2(nothing, STDIN_FILENO) < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) _exit(70);
    if (nothing != STDIN_FILENO) close(nothing);
}

[[noreturn]] void RunChild(const std::function<void(const Channel&)>& body, int socket, pid_t parent,
                           const Interruption& interruption) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(70); // it died before the line above
    SettleStreams();
    interruption.LiftInChild();
    const Channel channel(socket, getpid());
    try {
        body(channel);
        channel.Tell(Done{});
    } catch (const std::exception& fault) {
        channel.Tell(ChildFault{fault.what()});
    }
    _exit(0); // not exit(): the bundle's own clean-up at exit is no part of a delivery
}

} // namespace

ChildEnd RunInChild(const std::function<void(const Channel&)>& body, const ChildLimits& limits,
                    const ChildListener& listener, const Interruption& interruption) {
    SetSignalEffect(SIGCHLD,
                    SIG_DFL); // ignored, as a caller may have left it, it would lose the child's status
    int pair[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) < 0) {
        throw ToolFault::FromErrno("no socket for the child process");
    }
    Descriptor parentSocket(pair[0]);
    Descriptor childSocket(pair[1]);
    const pid_t parent = getpid();
    const pid_t id = fork();
    if (id < 0) throw ToolFault::FromErrno("no child process");
    if (id == 0) {
        parentSocket.Close();
        RunChild(body, childSocket.Number(), parent, interruption);
    }
    setpgid(id, id); // both do it, so that it is done whoever runs first
    childSocket.Close();
    return Supervision(id, parentSocket, limits, listener, interruption).Serve();
}

} // namespace xcodhost
