#include "InstallerHost.h"
#include "support/NewText.h"

#include <macplatform/Alerts.h>
#include <macplatform/Bundles.h>
#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>
#include <macplatform/PropertyList.h>
#include <macplatform/StartupVolume.h>
#include <stdexcept>

namespace {

struct LoadedPlugIn {
    CFPlugInRef plugIn;
    CFUUIDRef type;
    CFUUIDRef factory;
};

LoadedPlugIn load(const CFUUIDBytes& typeBytes) {
    const CFURLRef url = NewURL(PLUGIN_BUNDLE);
    const CFPlugInRef plugIn = CFPlugInCreate(kCFAllocatorDefault, url);
    CFRelease(url);
    if (!plugIn) throw std::runtime_error(macplatform::LastBundleFailure().text);

    const CFUUIDRef type = CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, typeBytes);
    const CFArrayRef factories = CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, plugIn);
    if (!factories || CFArrayGetCount(factories) != 1) throw std::runtime_error("not one factory");
    const auto factory = static_cast<CFUUIDRef>(CFRetain(CFArrayGetValueAtIndex(factories, 0)));
    CFRelease(factories);
    return {plugIn, type, factory};
}

/// Returns one line for a call that stores something or opens a file. Returns an empty string
/// for any other call.
std::string effectOf(const macplatform::RecordedCall& entry) {
    const auto& a = entry.arguments;
    if (entry.call == "CFPreferencesSetValue") {
        return "set " + a.at(2) + " " + a.at(0) + " = " + a.at(1) + ", " + a.at(3) + ", " + a.at(4);
    }
    if (entry.call == "CFPreferencesSynchronize") {
        return "synchronize " + a.at(0) + ", " + a.at(1) + ", " + a.at(2);
    }
    if (entry.call == "fopen" || entry.call == "FSSetCatalogInfo") return entry.call + " " + a.at(0);
    return {};
}

const LoadedPlugIn& plugIn() {
    static const LoadedPlugIn loaded = load(
        {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2, 0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8});
    return loaded;
}

} // namespace

InstallerHost::InstallerHost() {
    XCodInstance* const instance = NewInstance(); // objects from the load of the bundle stay and are no leak
    instance->functionBlock->Release(instance);
    if (!macplatform::SetStartupVolume(volume.Path().string())) throw std::runtime_error("no startup volume");
    macplatform::SetCallObserver([this](const macplatform::RecordedCall& entry) {
        calls.push_back(entry.call);
        const std::string effect = effectOf(entry);
        if (!effect.empty()) effects.push_back(effect);
    });
    macplatform::SetAlertResponder([this](const macplatform::Alert& alert) {
        const bool isStop = alert.kind == macplatform::Alert::Kind::kStop;
        effects.push_back(isStop ? "stop " + std::to_string(alert.resource) : "alert " + alert.message);
        return isStop ? -1 : 0;
    });
    liveBefore = macplatform::LiveObjectCount();
}

InstallerHost::~InstallerHost() {
    EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore)
        << testing::PrintToString(macplatform::DescribeLiveObjects());
    EXPECT_EQ(macplatform::CancelInjectedFaults(), 0U);
    macplatform::SetAlertResponder({});
    macplatform::SetCallObserver({});
    macplatform::SetStartupVolume("");
}

CFUUIDRef InstallerHost::Factory() { return plugIn().factory; }

XCodInstance* InstallerHost::NewInstance() {
    void* const instance = CFPlugInInstanceCreate(kCFAllocatorDefault, plugIn().factory, plugIn().type);
    if (!instance) throw std::runtime_error(macplatform::LastBundleFailure().text);
    return static_cast<XCodInstance*>(instance);
}

void* InstallerHost::Exported(const char* name) { return macplatform::BundleSymbol(plugIn().plugIn, name); }

std::uint32_t InstallerHost::Deliver(const Event& event, Step step) {
    std::vector<unsigned char> memory(1 + sizeof(XCodParamBlock) + 64, 0xA5);
    auto* const block = reinterpret_cast<XCodParamBlock*>(memory.data() + 1);
    block->selector = static_cast<std::int16_t>(event.selector);
    block->message = static_cast<std::int16_t>(event.message);
    block->productCode = event.productCode;
    block->languageCode = event.languageCode;
    block->errorFlags = event.errorFlags;
    const std::vector<unsigned char> before = memory;

    if (step) {
        step(block);
    } else {
        const auto release = [](XCodInstance* instance) { instance->functionBlock->Release(instance); };
        const std::unique_ptr<XCodInstance, decltype(release)> instance(NewInstance(), release);
        instance->functionBlock->XCodMain(block);
    }
    const std::uint32_t flags = block->errorFlags;
    block->errorFlags = event.errorFlags;
    EXPECT_EQ(memory, before);
    return flags;
}

InstallerHost::Texts InstallerHost::Preferences(const std::string& domain) const {
    const auto file = macplatform::ReadPropertyList(OnVolume("/Library/Preferences/" + domain + ".plist"));
    Texts texts;
    for (std::size_t i = 0; i < file.root.keys.size(); ++i) {
        texts.push_back(file.root.keys[i] + " = " + file.root.values[i].Describe());
    }
    return texts;
}
