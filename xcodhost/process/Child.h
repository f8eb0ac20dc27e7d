#pragma once

/// Child processes in which a bundle's code runs, so that its crash, hang or exit is told and never shared.

#include "Channel.h"
#include "Interruption.h"
#include "Messages.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace xcodhost {

struct ChildLimits {
    double secondsPerCall = 10; ///< From one message CallBegan to the next, or to the child's end.
    double secondsPerRun = 100;
    std::size_t reportBytes = std::size_t{256} << 20; ///< What a child may tell at most.
    std::size_t outputBytes = std::size_t{1} << 20; ///< What it may print at most, where that is listened to.
};

struct ChildEnd {
    enum class Kind {
        kFinished,   ///< It told Done and ended.
        kExited,     ///< It ended before that with `code` as exit status.
        kSignalled,  ///< A signal, `code`, ended it.
        kOverTime,   ///< A limit passed; it was ended.
        kOverReport, ///< It told more than the limit, or what is no message; it was ended.
        kOverOutput, ///< It printed more than the limit; it was ended.
    };
    Kind kind = Kind::kFinished;
    int code = 0;
    double seconds = 0; ///< The limit that passed.
};

/// The parent's side.
struct ChildListener {
    std::function<void(Message&&)> onMessage; ///< All but alerts.
    /// The limits' clocks stand still until it answers.
    std::function<int(macplatform::Alert&&)> onAlert;
    /// What the child prints, in pieces; without it that goes to our standard error.
    std::function<void(std::string_view)> onOutput = {};
};

/// Several children at once, served by one thread.
class Children {
public:
    explicit Children(const Interruption& pendingSignals);
    ~Children(); ///< Those that still run are killed and reaped, with all that they started.
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;

    /// Runs `body` in a child of this process, which must have one thread only. The child reads nothing on
    /// its standard input. `onEnd` is called once, when it has ended and was reaped. Throws ToolFault.
    void Start(const std::function<void(const Channel&)>& body, const ChildLimits& limits,
               ChildListener listener, std::function<void(const ChildEnd&)> onEnd);
    std::size_t Count() const { return running.size(); }
    /// Waits until something happens and calls the listeners; `onEnd` may start another child. Throws
    /// ToolFault, Interrupted, or what a listener throws.
    void Serve();

private:
    class Supervision;
    std::vector<std::unique_ptr<Supervision>> running;
    const Interruption& interruption;
};

/// One child, served until it has ended.
ChildEnd RunInChild(const std::function<void(const Channel&)>& body, const ChildLimits& limits,
                    ChildListener listener, const Interruption& interruption);

} // namespace xcodhost
