#pragma once

/// Declares the class that loads a bundle and calls its functions as the installer does. The class is used in
/// the child process. It reports every call to the parent process before the call begins.

#include "contract/PluginContract.h"
#include "process/Channel.h"

#include <CoreFoundation/CoreFoundation.h>
#include <macplatform/CFOwner.h>

#include <optional>
#include <string>
#include <utility>

namespace xcodhost {

/// Thrown to end the work of the child process after the reason has been reported to the parent process.
struct RunStopped {};

/// Returns the constant UUID object with these bytes. The caller must not release the object.
CFUUIDRef ConstantIdentifier(const CFUUIDBytes& bytes);

using FactoryFunction = void* (*)(CFAllocatorRef allocator, CFUUIDRef type);

/// A bundle and the calls that the installer makes. If a function fails, it reports `LoadFailed` and throws
/// `RunStopped`.
class LoadedBundle {
public:
    /// Reads the property list of the bundle at this absolute path. Loads no code.
    LoadedBundle(std::string bundlePath, const Channel& parentChannel);

    /// Finds the factories of the plug-in type in the property list. Fails if there is none.
    void FindFactories();
    /// Returns the first factory of the plug-in type. `FindFactories` must have been called. The bundle owns
    /// the identifier.
    CFUUIDRef Factory() const;
    /// Returns the address of an exported function. Loads the code if it is not loaded yet.
    void* Symbol(const std::string& name);

    /// Returns a new instance of `Factory()`. The caller releases the instance with `Release`.
    FunctionBlock** MakeInstance();
    /// Returns the installer's interface of the instance. The caller releases the interface with `Release`.
    FunctionBlock** RequestInterface(FunctionBlock** instance);
    /// Releases one reference to an instance or interface. Returns the result of the bundle.
    ULONG Release(FunctionBlock** instance);
    /// Returns the function of the interface to which events are delivered.
    DeliverFunction MainEntry(FunctionBlock** instance) const;

    /// Reports the call, runs it and returns its result. Reports an exception of the bundle as
    /// `ExceptionEscaped` and throws `RunStopped`.
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
        throw RunStopped{};
    }
    /// Returns whether `RunCode` is calling the bundle. A platform call in this time is a call of the bundle.
    bool IsRunning() const { return isRunning; }

private:
    void ReportException() const;
    [[noreturn]] void Stop(const char* reason, const std::string& text) const;
    [[noreturn]] void StopWithPlatformReason() const;

    std::string path;
    const Channel& channel;
    macplatform::CFOwner<CFPlugInRef> plugIn;
    macplatform::CFOwner<CFArrayRef> factories;
    bool isRunning = false;
};

} // namespace xcodhost
