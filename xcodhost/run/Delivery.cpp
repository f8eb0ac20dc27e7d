#include "Delivery.h"

#include "ExitStatus.h"
#include "bundle/LoadedBundle.h"

#include <macplatform/LiveObjects.h>
#include <macplatform/StartupVolume.h>

#include <algorithm>

namespace xcodhost {

namespace {

/// The number of bytes after the parameter block that are checked. A plug-in must not change these bytes. A
/// change is reported.
constexpr std::size_t kGuard = 64;

/// One run of a delivery plan.
class Session {
public:
    Session(const DeliveryPlan& deliveryPlan, const Channel& parentChannel)
        : plan(deliveryPlan), channel(parentChannel), bundle(deliveryPlan.bundle, parentChannel) {}

    void Run() {
        if (!plan.isDirect) bundle.FindFactories();
        const std::size_t before = macplatform::DescribeLiveObjects().size();
        ConnectPlatform();
        if (plan.isDirect) {
            for (const ParameterBlock& block : plan.blocks) DeliverDirectly(block);
        } else {
            DeliverThroughInterface();
        }
        std::vector<std::string> left = macplatform::DescribeLiveObjects();
        left.erase(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(std::min(before, left.size())));
        channel.Send(ObjectsLeft{std::move(left)});
    }

private:
    void ConnectPlatform() {
        if (!macplatform::SetStartupVolume(plan.volume)) throw ToolFault::FromErrno(plan.volume);
        macplatform::SetAlertResponder(
            [this](const macplatform::Alert& alert) { return channel.Ask(alert); });
        macplatform::SetCallObserver([this](const macplatform::RecordedCall& entry) { Record(entry); });
    }

    void Record(const macplatform::RecordedCall& entry) const {
        // CFPlugInInstanceCreate is a call of the host. It calls the factory function of the bundle.
        if (!bundle.IsRunning() || entry.call == "CFPlugInInstanceCreate") return;
        if (plan.recordsAll || IsSynchronisationProblem(entry)) channel.Send(entry);
    }

    void DeliverThroughInterface() {
        FunctionBlock** const instance = bundle.MakeInstance();
        FunctionBlock** const interface = bundle.RequestInterface(instance);
        bundle.Release(instance);
        for (const ParameterBlock& block : plan.blocks) {
            Deliver("XCodMain", block, bundle.MainEntry(interface));
        }
        bundle.Release(interface);
    }

    void DeliverDirectly(const ParameterBlock& block) {
        const std::string function = block.Message() == kPreInstall ? "PreInstall" : "PostInstall";
        Deliver(function, block, reinterpret_cast<DeliverFunction>(bundle.Symbol(function)));
    }

    void Deliver(const std::string& function, const ParameterBlock& given, DeliverFunction deliver) {
        std::vector<char> bytes = given.Bytes();
        bytes.resize(bytes.size() + kGuard);
        const ParameterBlock before(bytes);
        bundle.RunCode({function, given.Describe(), EventName(given.Message())}, [&] {
            deliver(bytes.data());
            return true;
        });
        const ParameterBlock after(std::move(bytes));
        channel.Send(CallReturned{
            {}, BlockEffect{before.ErrorFlags(), after.ErrorFlags(), before.BytesChangedElsewhere(after)}});
    }

    const DeliveryPlan& plan;
    const Channel& channel;
    LoadedBundle bundle;
};

} // namespace

bool IsSynchronisationProblem(const macplatform::RecordedCall& call) {
    return call.call == "CFPreferencesSynchronize" && (call.result == "false" || !call.note.empty());
}

void Deliver(const DeliveryPlan& plan, const Channel& channel) {
    try {
        Session(plan, channel).Run();
    } catch (const RunStopped&) { // the reason has been reported
    }
}

} // namespace xcodhost
