#pragma once

/// A child process in which a bundle's code runs, so that its crash, hang or exit is told and never shared.

#include "Channel.h"
#include "Interruption.h"
#include "Messages.h"

#include <cstddef>
#include <functional>

namespace xcodhost {

struct ChildLimits {
    double secondsPerCall = 10; ///< From one message CallBegan to the next, or to the child's end.
    double secondsPerRun = 100;
    std::size_t reportBytes = std::size_t{256} << 20; ///< What a child may tell at most.
};

struct ChildEnd {
    enum class Kind {
        Finished,   ///< It told Done and ended.
        Exited,     ///< It ended before that with `code` as exit status.
        Signalled,  ///< A signal, `code`, ended it.
        OverTime,   ///< A limit passed; it was ended.
        OverReport, ///< It told more than the limit, or what is no message; it was ended.
    };
    Kind kind = Kind::Finished;
    int code = 0;
    double seconds = 0; ///< The limit that passed.
};

/// The parent's side.
struct ChildListener {
    std::function<void(Message&&)> onMessage; ///< All but alerts.
    /// The limits' clocks stand still until it answers.
    std::function<int(macplatform::Alert&&)> onAlert;
};

/// Runs `body` in a child of this process, which must have one thread only, and serves the listener until the
/// child has ended. The child reads nothing on its standard input and writes to our standard error. Before
/// this returns or throws (ToolFault, Interrupted, or what the listener throws) the child and its process
/// group are killed and the child is reaped.
ChildEnd RunInChild(const std::function<void(const Channel&)>& body, const ChildLimits& limits,
                    const ChildListener& listener, const Interruption& interruption);

} // namespace xcodhost
