#pragma once

/// Declares a class and a function that run code of a bundle in child processes. A crash, an endless loop or
/// an exit of the code is reported and does not affect the tool.

#include "Channel.h"
#include "Interruption.h"
#include "Messages.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace xcodhost {

/// The limits of one child. A child that exceeds a limit is killed.
struct ChildLimits {
    double secondsPerCall = 10; ///< From a message CallBegan to the next one, or to the end.
    double secondsPerRun = 20 * secondsPerCall;
    std::size_t reportBytes = std::size_t{256} << 20; ///< The size of all messages.
    std::size_t outputBytes = std::size_t{1} << 20;   ///< The size of the output, if `onOutput` is set.
};

/// How a child ended.
struct ChildEnd {
    enum class Kind {
        kFinished,            ///< The child sent Done and ended.
        kExited,              ///< The child ended without Done. `code` is the exit status.
        kSignalled,           ///< The child was killed by the signal `code`.
        kTimeLimitExceeded,   ///< The child exceeded the time limit `seconds`.
        kReportLimitExceeded, ///< The child exceeded the size of messages, or sent data that is not a
                              ///< message.
        kOutputLimitExceeded, ///< The child exceeded the size of the output.
    };
    Kind kind = Kind::kFinished;
    int code = 0;
    double seconds = 0;
};

/// The functions with which the parent processes the messages and the output of a child.
struct ChildListener {
    std::function<void(Message&&)> onMessage; ///< Called for every message except alerts.
    /// Called for every alert. Returns the index of the chosen button, or -1. The time limits are extended by
    /// the time in this function.
    std::function<int(macplatform::Alert&&)> onAlert;
    /// Called with the output of the child, in pieces. Empty: the output goes to the tool's standard error.
    std::function<void(std::string_view)> onOutput = {};
};

/// Runs several children at the same time. The calling thread processes the messages of all children.
class Children {
public:
    explicit Children(const Interruption& pendingSignals);
    /// Kills and reaps the running children and every process that they have started.
    ~Children();
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;

    /// Starts a child process that runs `body`. The calling process must have only one thread. The standard
    /// input of the child is empty. `Serve` calls `onEnd` once, after it has reaped the child. Throws
    /// ToolFault.
    void Start(const std::function<void(const Channel&)>& body, const ChildLimits& limits,
               ChildListener listener, std::function<void(const ChildEnd&)> onEnd);
    /// Returns the number of children that have not been reaped.
    std::size_t Count() const { return running.size(); }
    /// Waits until a child sends a message, prints output, ends or exceeds a time limit. Then calls the
    /// listeners and `onEnd`. `onEnd` may start another child. Throws ToolFault, Interrupted, and the
    /// exceptions of the listeners.
    void Serve();

private:
    class Supervision;
    std::vector<std::unique_ptr<Supervision>> running;
    const Interruption& interruption;
};

/// Runs `body` in one child until the child has ended. Throws as `Children::Start` and `Children::Serve` do.
ChildEnd RunInChild(const std::function<void(const Channel&)>& body, const ChildLimits& limits,
                    ChildListener listener, const Interruption& interruption);

} // namespace xcodhost
