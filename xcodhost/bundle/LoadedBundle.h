#pragma once

/// A bundle as the installer holds it. Runs in the child process and tells the parent what it is about to do.

#include "contract/PluginContract.h"
#include "process/Channel.h"

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace xcodhost {

/// Thrown to end the work; what is wrong has been told.
struct Stopped {};

struct Releaser {
    void operator()(const void* object) const { CFRelease(object); }
};
template <typename Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, Releaser>;

/// The constant object of an identifier; lent for ever.
CFUUIDRef ConstantIdentifier(const CFUUIDBytes& bytes);

using FactoryFunction = void* (*)(CFAllocatorRef allocator, CFUUIDRef type);

class LoadedBundle {
public:
    /// Reads the property list of the bundle at this absolute path. No code is loaded yet. What cannot be
    /// had, here and below, is told as LoadFailed, and Stopped is thrown.
    LoadedBundle(std::string bundlePath, const Channel& parentChannel);

    /// Looks for the factories of the plug-in type in the property list.
    void FindFactories();
    /// The first factory of the plug-in type.
    CFUUIDRef Factory() const;
    /// The address of an exported function, the code loaded if need be.
    void* Symbol(const std::string& name);

    /// An instance of `Factory()`, made as the installer makes it.
    FunctionBlock** MakeInstance();
    /// The installer's interface of the instance.
    FunctionBlock** AskInterface(FunctionBlock** instance);
    ULONG Release(FunctionBlock** instance);
    DeliverFunction MainEntry(FunctionBlock** instance) const;

    /// Runs the bundle's code: tells which call it is, and what exception it let out, which then ends the
    /// work.
    template <typename Call>
    auto RunCode(const CallBegan& call, Call run) {
        channel.Send(call);
        isRunning = true;
        try {
            auto result = run();
            isRunning = false;
            return result;
        } catch (...) {
            isRunning = false;
            ReportException();
        }
        throw Stopped{};
    }
    /// Whether a platform call that is made now is the bundle's.
    bool IsRunning() const { return isRunning; }

private:
    void ReportException() const;
    [[noreturn]] void Stop(const char* reason, const std::string& text) const;
    [[noreturn]] void StopWithPlatformReason() const;

    std::string path;
    const Channel& channel;
    Owned<CFPlugInRef> plugIn;
    Owned<CFArrayRef> factories;
    bool isRunning = false;
};

} // namespace xcodhost
