#include "Delivery.h"

#include "DisplayText.h"
#include "ExitStatus.h"

#include <CoreFoundation/CoreFoundation.h>
#include <macplatform/LiveObjects.h>
#include <macplatform/StartupVolume.h>

#include <algorithm>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <memory>
#include <optional>
#include <typeinfo>
#include <utility>

namespace xcodhost {

namespace {

/// Ends the delivery; what is wrong has been told.
struct Stopped {};

struct Releaser {
    void operator()(const void* object) const { CFRelease(object); }
};
template <typename Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, Releaser>;

CFUUIDRef ConstantIdentifier(const CFUUIDBytes& b) {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, b.byte0, b.byte1, b.byte2, b.byte3, b.byte4,
                                          b.byte5, b.byte6, b.byte7, b.byte8, b.byte9, b.byte10, b.byte11,
                                          b.byte12, b.byte13, b.byte14, b.byte15);
}

std::string CurrentExceptionType() {
    const std::type_info* type = abi::__cxa_current_exception_type();
    if (!type) return "unknown type";
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type->name(), nullptr, nullptr, nullptr), &std::free);
    return name ? name.get() : type->name();
}

/// Room behind the block that no plug-in may touch.
constexpr std::size_t kGuard = 64;

class Session {
public:
    Session(const DeliveryPlan& deliveryPlan, const Channel& parentChannel)
        : plan(deliveryPlan), channel(parentChannel) {}

    void Run() {
        OpenBundle();
        const std::size_t before = macplatform::DescribeLiveObjects().size();
        ConnectPlatform();
        if (plan.isDirect) {
            for (const ParameterBlock& block : plan.blocks) DeliverDirectly(block);
        } else {
            DeliverThroughInterface();
        }
        std::vector<std::string> left = macplatform::DescribeLiveObjects();
        left.erase(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(std::min(before, left.size())));
        channel.Tell(ObjectsLeft{std::move(left)});
    }

private:
    /// Reads the property list. No code is loaded yet, and paths are still this machine's.
    void OpenBundle() {
        const Owned<CFStringRef> path(
            CFStringCreateWithCString(kCFAllocatorDefault, plan.bundle.c_str(), kCFStringEncodingUTF8));
        if (!path) Stop({"no-bundle", Printable(plan.bundle) + ": the path is no UTF-8"});
        const Owned<CFURLRef> url(
            CFURLCreateWithFileSystemPath(kCFAllocatorDefault, path.get(), kCFURLPOSIXPathStyle, true));
        plugIn.reset(url ? CFPlugInCreate(kCFAllocatorDefault, url.get()) : nullptr);
        if (!plugIn) StopWithPlatformReason();
        if (plan.isDirect) return;
        factories.reset(
            CFPlugInFindFactoriesForPlugInTypeInPlugIn(ConstantIdentifier(kPluginType), plugIn.get()));
        if (!factories || CFArrayGetCount(factories.get()) == 0) {
            // A property list that is broken is the better reason, where the platform knows of one.
            if (macplatform::LastBundleFailure().fault != macplatform::BundleFault::None)
                StopWithPlatformReason();
            Stop({"missing-key", plan.bundle + ": its property list has no factory for the plug-in type " +
                                     Describe(kPluginType)});
        }
    }

    void ConnectPlatform() {
        if (!macplatform::SetStartupVolume(plan.volume)) throw ToolFault::FromErrno(plan.volume);
        macplatform::SetAlertPresenter(
            [this](const macplatform::Alert& alert) { return channel.Ask(alert); });
        macplatform::SetJournalObserver([this](const macplatform::JournalEntry& entry) { Tell(entry); });
    }

    void Tell(const macplatform::JournalEntry& entry) const {
        // Made by the host, not by the bundle's code that runs inside it.
        if (!isBundleRunning || entry.call == "CFPlugInInstanceCreate") return;
        const bool isLostWrite = entry.call == "CFPreferencesSynchronize" && entry.result == "false";
        if (plan.tellsAll || isLostWrite) channel.Tell(entry);
    }

    [[noreturn]] void Stop(const LoadFailed& failure) const {
        channel.Tell(failure);
        throw Stopped{};
    }
    [[noreturn]] void StopWithPlatformReason() const {
        const macplatform::BundleFailure& failure = macplatform::LastBundleFailure();
        std::string text = failure.text.empty() ? "the bundle cannot be loaded" : failure.text;
        if (text.find(plan.bundle) == std::string::npos) text.insert(0, plan.bundle + ": ");
        Stop({ReasonWord(failure.fault), std::move(text)});
    }

    /// Runs the bundle's code, and tells which call it is, that it came back, or what it let out.
    template <typename Call>
    auto InBundle(const std::string& function, const std::string& arguments, const std::string& event,
                  Call call) {
        channel.Tell(CallBegan{function, arguments, event});
        isBundleRunning = true;
        try {
            auto result = call();
            isBundleRunning = false;
            return result;
        } catch (const std::exception& exception) {
            channel.Tell(ExceptionEscaped{CurrentExceptionType(), exception.what()});
        } catch (...) {
            channel.Tell(ExceptionEscaped{CurrentExceptionType(), {}});
        }
        throw Stopped{};
    }

    void DeliverThroughInterface() {
        FunctionBlock** const instance = MakeInstance();
        FunctionBlock** const interface = AskInterface(instance);
        Release(instance);
        for (const ParameterBlock& block : plan.blocks) {
            if (!(*interface)->main)
                Stop({"interface-refused", plan.bundle + ": the main entry's slot is null"});
            Deliver("XCodMain", block, (*interface)->main);
        }
        Release(interface);
    }

    FunctionBlock** MakeInstance() {
        const auto factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories.get(), 0));
        const CFUUIDRef type = ConstantIdentifier(kPluginType);
        void* const made =
            InBundle("CFPlugInInstanceCreate",
                     "factory " + Describe(CFUUIDGetUUIDBytes(factory)) + ", type " + Describe(kPluginType),
                     {}, [&] { return CFPlugInInstanceCreate(kCFAllocatorDefault, factory, type); });
        if (!made) StopWithPlatformReason();
        channel.Tell(CallReturned{"an instance", std::nullopt});
        auto* const instance = static_cast<FunctionBlock**>(made);
        if (!*instance || !(*instance)->QueryInterface || !(*instance)->Release) {
            Stop({"interface-refused",
                  plan.bundle + ": the instance has no function block, or one with null slots"});
        }
        return instance;
    }

    FunctionBlock** AskInterface(FunctionBlock** instance) {
        void* found = nullptr;
        const HRESULT result = InBundle("QueryInterface", "interface " + Describe(kHostInterface), {}, [&] {
            return (*instance)->QueryInterface(instance, kHostInterface, &found);
        });
        const std::string code = Hex(static_cast<std::uint32_t>(result), 8);
        if (result != S_OK || !found) {
            Stop({"interface-refused", plan.bundle + ": the instance refuses the interface " +
                                           Describe(kHostInterface) + " (" + code + ")"});
        }
        channel.Tell(CallReturned{code, std::nullopt});
        auto* const interface = static_cast<FunctionBlock**>(found);
        if (!*interface || !(*interface)->Release) {
            Stop({"interface-refused",
                  plan.bundle + ": the interface has no function block, or one with null slots"});
        }
        return interface;
    }

    void Release(FunctionBlock** instance) {
        const ULONG references = InBundle("Release", {}, {}, [&] { return (*instance)->Release(instance); });
        channel.Tell(CallReturned{std::to_string(references), std::nullopt});
    }

    void DeliverDirectly(const ParameterBlock& block) {
        const std::string function = block.Message() == kPreInstall ? "PreInstall" : "PostInstall";
        void* const symbol = InBundle("loading", "symbol " + function, {},
                                      [&] { return macplatform::BundleSymbol(plugIn.get(), function); });
        if (!symbol) StopWithPlatformReason();
        channel.Tell(CallReturned{"a function", std::nullopt});
        Deliver(function, block, reinterpret_cast<DeliverFunction>(symbol));
    }

    void Deliver(const std::string& function, const ParameterBlock& given, DeliverFunction deliver) {
        std::vector<char> bytes = given.Bytes();
        bytes.resize(bytes.size() + kGuard);
        const ParameterBlock before(bytes);
        InBundle(function, given.Describe(), EventName(given.Message()), [&] {
            deliver(bytes.data());
            return true;
        });
        const ParameterBlock after(std::move(bytes));
        BlockEffect effect{before.ErrorFlags(), after.ErrorFlags(), {}};
        std::size_t first = 0;
        std::size_t last = 0;
        if (before.DiffersElsewhere(after, first, last)) {
            effect.otherBytes = std::to_string(first) + " to " + std::to_string(last);
        }
        channel.Tell(CallReturned{{}, effect});
    }

    const DeliveryPlan& plan;
    const Channel& channel;
    Owned<CFPlugInRef> plugIn;
    Owned<CFArrayRef> factories;
    bool isBundleRunning = false;
};

} // namespace

void Deliver(const DeliveryPlan& plan, const Channel& channel) {
    Session session(plan, channel);
    try {
        session.Run();
    } catch (const Stopped&) { // told already
    }
}

} // namespace xcodhost
