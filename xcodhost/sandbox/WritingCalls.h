#pragma once

/// Declares the table of the system calls that can change items of a file system. The table has the positions
/// of their arguments.

#include <vector>

namespace xcodhost {

/// A system call that can change the item that a path or a descriptor names. The position of the first
/// argument is 0. The position -1 means that the call does not have this argument.
struct WritingCall {
    struct Target {
        int folder = -1; ///< The directory descriptor of a relative path. Without a path: the item itself.
        int path = -1;
    };

    constexpr WritingCall(long callNumber, const char* callName) : number(callNumber), name(callName) {}
    /// Sets the argument with the path of the item.
    constexpr WritingCall& Path(int path) { return PathIn(-1, path); }
    /// Sets the arguments with the directory descriptor and the path of the item.
    constexpr WritingCall& PathIn(int folder, int path) {
        first = {folder, path};
        return *this;
    }
    /// Sets the argument with the descriptor of the item.
    constexpr WritingCall& Descriptor(int descriptor) { return PathIn(descriptor, -1); }
    /// Sets the argument with the new path of a renamed item.
    constexpr WritingCall& NewPath(int path) { return NewPathIn(-1, path); }
    /// Sets the arguments with the directory descriptor and the new path of a renamed item.
    constexpr WritingCall& NewPathIn(int folder, int path) {
        second = {folder, path};
        return *this;
    }
    /// Sets the argument with the flags of open. A call that opens an item only for reading changes nothing.
    constexpr WritingCall& OpenFlags(int argument) {
        flags = argument;
        return CreatesOrChanges();
    }
    /// Marks a call that creates an item and changes nothing if the item exists.
    constexpr WritingCall& Creates() {
        effect = Effect::kOnMissingItem;
        return *this;
    }
    constexpr WritingCall& CreatesOrChanges() {
        effect = Effect::kAlways;
        return *this;
    }

    long number;
    const char* name;
    Target first;
    Target second; ///< The new path of a renamed item.
    int flags = -1;
    enum class Effect { kOnItem, kOnMissingItem, kAlways } effect = Effect::kOnItem;
};

/// Returns the calls of the machine's own calling convention.
const std::vector<WritingCall>& WritingCalls();

} // namespace xcodhost
