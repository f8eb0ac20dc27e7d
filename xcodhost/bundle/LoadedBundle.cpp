#include "LoadedBundle.h"

#include "DisplayText.h"

#include <macplatform/Bundles.h>

#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <typeinfo>

namespace xcodhost {

namespace {

std::string currentExceptionType() {
    const std::type_info* type = abi::__cxa_current_exception_type();
    if (!type) return "unknown type";
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type->name(), nullptr, nullptr, nullptr), &std::free);
    return name ? name.get() : type->name();
}

} // namespace

CFUUIDRef ConstantIdentifier(const CFUUIDBytes& b) {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, b.byte0, b.byte1, b.byte2, b.byte3, b.byte4,
                                          b.byte5, b.byte6, b.byte7, b.byte8, b.byte9, b.byte10, b.byte11,
                                          b.byte12, b.byte13, b.byte14, b.byte15);
}

LoadedBundle::LoadedBundle(std::string bundlePath, const Channel& parentChannel)
    : path(std::move(bundlePath)), channel(parentChannel) {
    const macplatform::CFOwner<CFStringRef> text(
        CFStringCreateWithCString(kCFAllocatorDefault, path.c_str(), kCFStringEncodingUTF8));
    if (!text) Stop("no-bundle", Printable(path) + ": the path is not UTF-8");
    const macplatform::CFOwner<CFURLRef> url(
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, text.get(), kCFURLPOSIXPathStyle, true));
    plugIn.reset(url ? CFPlugInCreate(kCFAllocatorDefault, url.get()) : nullptr);
    if (!plugIn) StopWithPlatformReason();
}

void LoadedBundle::FindFactories() {
    factories.reset(
        CFPlugInFindFactoriesForPlugInTypeInPlugIn(ConstantIdentifier(kPluginType), plugIn.get()));
    if (factories && CFArrayGetCount(factories.get()) > 0) return;
    // A fault of the property list is a more exact reason than the missing factory.
    if (macplatform::LastBundleFailure().fault != macplatform::BundleFault::kNone) StopWithPlatformReason();
    Stop("missing-key",
         path + ": its property list has no factory for the plug-in type " + Describe(kPluginType));
}

CFUUIDRef LoadedBundle::Factory() const {
    return static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories.get(), 0));
}

void* LoadedBundle::Symbol(const std::string& name) {
    void* const symbol = RunCode({"loading", "symbol " + name, {}},
                                 [&] { return macplatform::BundleSymbol(plugIn.get(), name); });
    if (!symbol) StopWithPlatformReason();
    channel.Send(CallReturned{"a function", std::nullopt});
    return symbol;
}

FunctionBlock** LoadedBundle::MakeInstance() {
    const CFUUIDRef factory = Factory();
    const CFUUIDRef type = ConstantIdentifier(kPluginType);
    void* const made =
        RunCode({"CFPlugInInstanceCreate",
                 "factory " + Describe(CFUUIDGetUUIDBytes(factory)) + ", type " + Describe(kPluginType),
                 {}},
                [&] { return CFPlugInInstanceCreate(kCFAllocatorDefault, factory, type); });
    if (!made) StopWithPlatformReason();
    channel.Send(CallReturned{"an instance", std::nullopt});
    auto* const instance = static_cast<FunctionBlock**>(made);
    if (!*instance || !(*instance)->QueryInterface || !(*instance)->Release) {
        Stop("interface-refused", path + ": the instance has no function block, or a slot of it is null");
    }
    return instance;
}

FunctionBlock** LoadedBundle::RequestInterface(FunctionBlock** instance) {
    void* found = nullptr;
    const HRESULT result = RunCode({"QueryInterface", "interface " + Describe(kHostInterface), {}}, [&] {
        return (*instance)->QueryInterface(instance, kHostInterface, &found);
    });
    const std::string code = Hex(static_cast<std::uint32_t>(result), 8);
    if (result != S_OK || !found) {
        Stop("interface-refused", path + ": the instance does not have the interface " +
                                      Describe(kHostInterface) + " (" + code + ")");
    }
    channel.Send(CallReturned{code, std::nullopt});
    auto* const interface = static_cast<FunctionBlock**>(found);
    if (!*interface || !(*interface)->Release) {
        Stop("interface-refused", path + ": the interface has no function block, or a slot of it is null");
    }
    return interface;
}

ULONG LoadedBundle::Release(FunctionBlock** instance) {
    const ULONG references = RunCode({"Release", {}, {}}, [&] { return (*instance)->Release(instance); });
    channel.Send(CallReturned{std::to_string(references), std::nullopt});
    return references;
}

DeliverFunction LoadedBundle::MainEntry(FunctionBlock** instance) const {
    if (!(*instance)->main) Stop("interface-refused", path + ": the slot of the main entry is null");
    return (*instance)->main;
}

void LoadedBundle::ReportException() const {
    try {
        throw;
    } catch (const std::exception& exception) {
        channel.Send(ExceptionEscaped{currentExceptionType(), exception.what()});
    } catch (...) {
        channel.Send(ExceptionEscaped{currentExceptionType(), {}});
    }
}

void LoadedBundle::Stop(const char* reason, const std::string& text) const {
    channel.Send(LoadFailed{reason, text});
    throw RunStopped{};
}

void LoadedBundle::StopWithPlatformReason() const {
    const macplatform::BundleFailure& failure = macplatform::LastBundleFailure();
    std::string text = failure.text.empty() ? "the bundle cannot be loaded" : failure.text;
    if (text.find(path) == std::string::npos) text.insert(0, path + ": ");
    Stop(LoadFailureReason(failure.fault), text);
}

} // namespace xcodhost
