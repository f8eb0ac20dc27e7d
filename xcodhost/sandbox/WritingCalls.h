#pragma once

#include <vector>

namespace xcodhost {

/// A system call that can change what a path or descriptor names. Arguments are told by their places; -1: it
/// has none.
struct WritingCall {
    long number;
    const char* name;
    struct Target {
        int folder = -1; ///< A descriptor that the path is relative to, or that is meant itself.
        int path = -1;
    };
    Target first;
    Target second = {};
    int flags = -1;     ///< Of an opening call: it changes nothing where they only ask to read.
    bool makes = false; ///< It changes nothing where the last target is there already; any other call does
                        ///< where it is.
};

/// Those of this machine's own calling convention.
const std::vector<WritingCall>& WritingCalls();

} // namespace xcodhost
