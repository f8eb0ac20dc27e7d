#include "Child.h"

#include "ChildProcess.h"
#include "Deadlines.h"
#include "ExitStatus.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace xcodhost {

namespace {

/// The two ends of a socket pair or a pipe.
struct Ends {
    macplatform::FileDescriptor ours;
    macplatform::FileDescriptor childs;
};

Ends newSocket() {
    int pair[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) < 0) {
        throw ToolFault::FromErrno("child process: cannot create a socket");
    }
    return {macplatform::FileDescriptor(pair[0]), macplatform::FileDescriptor(pair[1])};
}

Ends newPipe() {
    int pair[2];
    if (pipe2(pair, O_CLOEXEC) < 0) throw ToolFault::FromErrno("child process: cannot create a pipe");
    fcntl(pair[0], F_SETFL, O_NONBLOCK);
    return {macplatform::FileDescriptor(pair[0]), macplatform::FileDescriptor(pair[1])};
}

void runBody(const std::function<void(const Channel&)>& body, int socket) {
    const Channel channel(socket, getpid());
    try {
        body(channel);
        channel.Send(Done{});
    } catch (const std::exception& fault) {
        channel.Send(ChildFault{fault.what()});
    }
}

} // namespace

/// Reads the messages and the output of one child until the child has ended.
class Children::Supervision {
public:
    Supervision(Ends&& channel, Ends&& print, const std::function<void(const Channel&)>& body,
                const ChildLimits& childLimits, ChildListener&& childListener,
                std::function<void(const ChildEnd&)>&& whenEnded, const Interruption& pendingSignals)
        : limits(childLimits),
          deadlines(childLimits.secondsPerCall, childLimits.secondsPerRun),
          listener(std::move(childListener)),
          onEnd(std::move(whenEnded)),
          socket(std::move(channel.ours)),
          output(std::move(print.ours)),
          child({channel.childs.Get(), print.childs.Get()}, pendingSignals,
                [&] { runBody(body, channel.childs.Get()); }) {}

    static constexpr std::size_t kDescriptors = 3;
    void AppendTo(std::vector<pollfd>& waits) const {
        waits.push_back({socket.Get(), POLLIN, 0});
        waits.push_back({output.Get(), POLLIN, 0});
        waits.push_back({child.EndDescriptor(), POLLIN, 0});
    }
    int Milliseconds() const { return deadlines.Milliseconds(); }

    /// Reads messages and output. `ready` points to the results of poll for the elements that `AppendTo` has
    /// added. Returns how the child ended, or no value if the child still runs.
    std::optional<ChildEnd> Serve(const pollfd* ready) {
        if (deadlines.HavePassed())
            return Ended(ChildEnd::Kind::kTimeLimitExceeded, 0, deadlines.PassedLimit());
        // If the child has already ended, the loop reads everything that the child has sent.
        const bool hasEnded = ready[2].revents != 0;
        do {
            mayHaveMore = false;
            if (!ReadOutput()) return Ended(ChildEnd::Kind::kOutputLimitExceeded, 0, 0);
            if (!ReadReport()) return Ended(ChildEnd::Kind::kReportLimitExceeded, 0, 0);
        } while (hasEnded && mayHaveMore);
        return hasEnded ? std::optional(EndOf(child.Reap())) : std::nullopt;
    }

    void ReportEnd(const ChildEnd& end) const { onEnd(end); }

private:
    ChildEnd Ended(ChildEnd::Kind kind, int code, double seconds) {
        child.Reap();
        return {kind, code, seconds};
    }

    ChildEnd EndOf(int status) const {
        if (isDone) return {};
        if (WIFSIGNALED(status)) return {ChildEnd::Kind::kSignalled, WTERMSIG(status), 0};
        return {ChildEnd::Kind::kExited, WEXITSTATUS(status), 0};
    }

    /// Takes the result of a read. Closes the descriptor at its end and after an error.
    bool HasBytes(ssize_t count, macplatform::FileDescriptor& descriptor) {
        const bool isInterrupted = count < 0 && errno == EINTR;
        if (count == 0 || (count < 0 && errno != EAGAIN && !isInterrupted)) descriptor.Close();
        if (count > 0 || isInterrupted) mayHaveMore = true;
        return count > 0;
    }

    /// Returns false if the child has printed too much.
    bool ReadOutput() {
        if (!output) return true;
        const ssize_t count = read(output.Get(), buffer.data(), buffer.size());
        if (!HasBytes(count, output)) return true;
        printed += static_cast<std::size_t>(count);
        listener.onOutput(std::string_view(buffer.data(), static_cast<std::size_t>(count)));
        return printed <= limits.outputBytes;
    }

    /// Returns false if the child has sent too much, or data that is not a message.
    bool ReadReport() {
        if (!socket) return true;
        const ssize_t count = recv(socket.Get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (!HasBytes(count, socket)) return true;
        received += static_cast<std::size_t>(count);
        pending.append(buffer.data(), static_cast<std::size_t>(count));
        return received <= limits.reportBytes && HandleLines();
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
        searched = pending.size(); // the next search begins at the new bytes
        return true;
    }

    void Handle(Message&& message) {
        if (auto* alert = std::get_if<macplatform::Alert>(&message)) return AnswerAlert(std::move(*alert));
        if (std::holds_alternative<CallBegan>(message)) deadlines.CallBegins();
        if (std::holds_alternative<Done>(message)) isDone = true;
        if (const auto* fault = std::get_if<ChildFault>(&message)) throw ToolFault(fault->text);
        listener.onMessage(std::move(message));
    }

    void AnswerAlert(macplatform::Alert&& alert) {
        const auto asked = Deadlines::Clock::now();
        const std::int32_t button = listener.onAlert(std::move(alert));
        deadlines.Hold(Deadlines::Clock::now() - asked);
        // SendAll fails if the child has ended. The next call of Serve handles the end.
        SendAll(socket.Get(), reinterpret_cast<const char*>(&button), sizeof button);
    }

    ChildLimits limits;
    Deadlines deadlines;
    ChildListener listener;
    std::function<void(const ChildEnd&)> onEnd;
    macplatform::FileDescriptor socket;
    macplatform::FileDescriptor output;
    ChildProcess child;
    std::array<char, 8192> buffer{};
    std::string pending;      ///< The start of an incomplete line.
    std::size_t searched = 0; ///< The bytes at the start of `pending` that contain no line feed.
    std::size_t received = 0;
    std::size_t printed = 0;
    bool mayHaveMore = false;
    bool isDone = false;
};

Children::Children(const Interruption& pendingSignals) : interruption(pendingSignals) {}
Children::~Children() = default;

void Children::Start(const std::function<void(const Channel&)>& body, const ChildLimits& limits,
                     ChildListener listener, std::function<void(const ChildEnd&)> onEnd) {
    running.push_back(std::make_unique<Supervision>(newSocket(), listener.onOutput ? newPipe() : Ends{}, body,
                                                    limits, std::move(listener), std::move(onEnd),
                                                    interruption));
}

void Children::Serve() {
    std::vector<pollfd> waits{{interruption.Descriptor(), POLLIN, 0}};
    int milliseconds = -1;
    for (const auto& one : running) {
        one->AppendTo(waits);
        const int left = one->Milliseconds();
        milliseconds = milliseconds < 0 ? left : std::min(milliseconds, left);
    }
    if (poll(waits.data(), waits.size(), milliseconds) < 0 && errno != EINTR) {
        throw ToolFault::FromErrno("child process: cannot wait for messages");
    }
    interruption.Check();
    const pollfd* ready = waits.data() + 1;
    std::vector<std::pair<std::unique_ptr<Supervision>, ChildEnd>> ended;
    for (auto& one : running) {
        if (const auto end = one->Serve(ready)) ended.emplace_back(std::move(one), *end);
        ready += Supervision::kDescriptors;
    }
    running.erase(std::remove(running.begin(), running.end(), nullptr), running.end());
    for (const auto& [one, end] : ended) one->ReportEnd(end);
}

ChildEnd RunInChild(const std::function<void(const Channel&)>& body, const ChildLimits& limits,
                    ChildListener listener, const Interruption& interruption) {
    ChildEnd result;
    Children children(interruption);
    children.Start(body, limits, std::move(listener), [&](const ChildEnd& end) { result = end; });
    while (children.Count() > 0) children.Serve();
    return result;
}

} // namespace xcodhost
