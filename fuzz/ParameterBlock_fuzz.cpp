// Passes any parameter block to the plug-in. Only the error bit may change. The preferences that the plug-in
// sets must be those that the tables of this file give for the fields of the block.

#include "Property.h"

#include <PostInstall/PluginEntry.h>

#include <macplatform/CallLog.h>
#include <macplatform/StartupVolume.h>

#include <cstring>
#include <map>
#include <unistd.h>
#include <vector>

namespace {

template <typename T>
T field(const std::string& block, std::size_t at) {
    T value;
    std::memcpy(&value, block.data() + at, sizeof value);
    return value;
}

/// Product code -> name, domain.
const std::map<std::int32_t, std::pair<std::string, std::string>> kProducts = {
    {1400, {"Tamblor", "com.korvane.audioplugins.Tamblor"}},
    {3100, {"Korvane Restora", "com.korvane.audioapps.Restora"}},
    {3500, {"Meridian4", "com.korvane.audioplugins.Meridian4"}},
    {5200, {"Gildmark", "com.korvane.audioplugins.Gildmark"}},
    {5100, {"Larynth", "com.korvane.audioplugins.Larynth"}},
    {5000, {"TCL", "com.korvane.tonecleanser"}},
    {4900, {"Fusewright", "com.korvane.audioplugins.Fusewright"}},
};
const std::map<std::int32_t, std::string> kLanguages = {
    {1, "fr"}, {2, "de"}, {3, "it"}, {6, "es"}, {11, "ja"}};

/// Returns one line "DOMAIN KEY VALUE" for each preference that the plug-in sets, in order.
std::string expectedPreferences(const std::string& block) {
    if (field<std::int16_t>(block, 0) != 1000) return {};
    const auto product = kProducts.find(field<std::int32_t>(block, 4));
    if (product == kProducts.end()) return {};
    const auto& [name, domain] = product->second;
    if (field<std::int16_t>(block, 2) == 2) {
        return "\"com.korvane.updater\" \"InstalledProducts/" + name + "/CurrentVersion\" \"1.73\"\n";
    }
    if (field<std::int16_t>(block, 2) != 3) return {};
    const auto language = kLanguages.find(field<std::int32_t>(block, 610));
    return "\"com.korvane.updater\" \"UpdateInterval\" 2\n\"" + domain + "\" \"Lang\" \"" +
           (language == kLanguages.end() ? "en" : language->second) + "\"\n";
}

std::string gSeen;
bool gShowedAlert = false;

/// Sets an empty startup volume and records the preferences that the plug-in sets. No preference is stored,
/// because every synchronisation fails.
void watch() {
    static std::string gFolder = "/dev/shm/volume-XXXXXX";
    static const bool made = mkdtemp(gFolder.data()) && macplatform::SetStartupVolume(gFolder);
    Require(made, "the volume can be created");
    std::atexit([] { rmdir(gFolder.c_str()); });
    macplatform::SetCallObserver([](const macplatform::RecordedCall& entry) {
        if (entry.call == "CFPreferencesSetValue") {
            gSeen += entry.arguments.at(2) + ' ' + entry.arguments.at(0) + ' ' + entry.arguments.at(1) + '\n';
        }
        gShowedAlert = gShowedAlert || entry.call == "StopAlert" || entry.call == "objc_msgSend";
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool watching = (watch(), true);
    static_cast<void>(watching);
    std::string block(Bytes(data, size));
    block.resize(sizeof(XCodParamBlock) + 3, '\x5A');
    const std::string before = block;
    gSeen.clear();
    gShowedAlert = false;
    for (int i = 0; i < 3; ++i) macplatform::InjectFault({"CFPreferencesSynchronize"});

    XCodMain(reinterpret_cast<XCodParamBlock*>(block.data()));
    macplatform::CancelInjectedFaults();

    std::string expected = before;
    if (field<std::int16_t>(before, 0) != 1000) expected[8] = static_cast<char>(expected[8] | 1);
    RequireEqual(block, expected, "only the error bit changes");
    RequireEqual(gSeen, expectedPreferences(before), "the preferences are those for the block");
    Require(!gShowedAlert, "no alert is shown");
    return 0;
}
