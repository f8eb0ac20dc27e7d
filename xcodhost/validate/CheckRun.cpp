#include "CheckRun.h"

#include "DisplayText.h"
#include "ExitStatus.h"
#include "alert/AlertResponder.h"
#include "run/RunReport.h"

#include <macplatform/LiveObjects.h>
#include <macplatform/StartupVolume.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

namespace xcodhost {

namespace {

/// The number of bytes before and after the block that no plug-in may change.
constexpr std::size_t kGuard = 64;
constexpr char kGuardByte = '\x5A';

/// Returns the start of the bytes, with the number of bytes if there are more.
std::string startOf(const std::string& bytes) {
    constexpr std::size_t kept = 200;
    const std::string start = PrintableQuoted(bytes.substr(0, kept));
    return bytes.size() <= kept ? start : start + "... of " + Counted(bytes.size(), "byte");
}

std::string describe(const SampleVolume& sample) {
    std::string text = sample.status ? "status file " + startOf(*sample.status) : "no status file";
    if (!sample.hasFolder) return text + ", no vendor's folder";
    return text + (sample.hasIcon ? "" : ", no icon file");
}

std::string stepName(std::uint16_t message) { return message == kPreInstall ? "PreInstall" : "PostInstall"; }

} // namespace

ParameterBlock Event(std::uint16_t message, std::int32_t product, std::int32_t language) {
    return {kInstallerSelector, message, product, language};
}

CheckRun::CheckRun(CheckPlace checkPlace, const Channel& parentChannel)
    : place(std::move(checkPlace)), channel(parentChannel) {
    macplatform::SetAlertResponder([this](const macplatform::Alert& alert) {
        if (current) current->alerts.push_back(alert);
        return chosenButton;
    });
    macplatform::SetCallObserver([this](const macplatform::RecordedCall& entry) { RecordCall(entry); });
    UseFreshVolume();
}

CheckRun::~CheckRun() {
    macplatform::SetCallObserver({});
    macplatform::SetAlertResponder({});
}

void CheckRun::UseFreshVolume(const SampleVolume& sample) {
    Trace("volume", describe(sample));
    volume = place.scratch + "/volume " + std::to_string(++volumes);
    MakeSampleVolume(volume, sample);
    if (bundle) ActivateVolume();
}

void CheckRun::ActivateVolume() const {
    if (!macplatform::SetStartupVolume(volume)) throw ToolFault::FromErrno(volume);
}

VolumeState CheckRun::CurrentVolume() const {
    VolumeState state = ReadVolume(volume);
    if (bundle) ActivateVolume(); // ReadVolume resets the startup volume
    return state;
}

void CheckRun::Write(const std::string& macPath, const std::string& bytes) const {
    Trace("write", macPath + ": " + startOf(bytes));
    std::ofstream file(OnVolume(macPath), std::ios::binary | std::ios::trunc);
    file << bytes;
    file.close();
    if (!file) throw ToolFault::FromErrno(macPath);
}

LoadedBundle& CheckRun::Bundle() {
    if (bundle) return *bundle;
    bundle.emplace(place.bundle, channel);
    bundle->FindFactories();
    ForgetObjects();
    ActivateVolume();
    return *bundle;
}

FunctionBlock** CheckRun::Interface() {
    if (interface) return interface;
    FunctionBlock** const instance = Bundle().MakeInstance();
    interface = Bundle().RequestInterface(instance);
    Bundle().Release(instance);
    return interface;
}

void CheckRun::ReleaseInterface() {
    if (interface) Bundle().Release(std::exchange(interface, nullptr));
}

FactoryFunction CheckRun::Factory() {
    return reinterpret_cast<FactoryFunction>(Bundle().Symbol(kFactoryFunction));
}

Outcome CheckRun::Deliver(const ParameterBlock& block, Entry entry, std::size_t misalignment) {
    const bool isMain = entry == Entry::kMain;
    const std::string function = isMain ? "XCodMain" : stepName(block.Message());
    const auto deliver = isMain ? Bundle().MainEntry(Interface())
                                : reinterpret_cast<DeliverFunction>(Bundle().Symbol(function));
    const CallBegan call{function, block.Describe(), EventName(block.Message())};
    if (misalignment != 0) Trace("address", "a multiple of 16 plus " + std::to_string(misalignment));
    return Recorded([&](Outcome& outcome) {
        const std::size_t start = kGuard + misalignment; // vectors begin at a multiple of 16
        std::vector<char> bytes(start, kGuardByte);
        bytes.insert(bytes.end(), block.Bytes().begin(), block.Bytes().end());
        bytes.insert(bytes.end(), kGuard, kGuardByte);
        const std::vector<char> given = bytes;
        Bundle().RunCode(call, [&] { return deliver(bytes.data() + start), true; });
        const auto from = [start](const std::vector<char>& all) {
            return ParameterBlock(
                std::vector<char>(all.begin() + static_cast<std::ptrdiff_t>(start), all.end()));
        };
        const ParameterBlock before = from(given);
        const ParameterBlock after = from(bytes);
        outcome.flagsBefore = before.ErrorFlags();
        outcome.flagsAfter = after.ErrorFlags();
        outcome.otherBytes = before.BytesChangedElsewhere(after);
        if (!std::equal(given.begin(), given.begin() + static_cast<std::ptrdiff_t>(start), bytes.begin())) {
            outcome.otherBytes = "before the block";
        }
    });
}

Outcome CheckRun::DeliverNullBlock(std::uint16_t message) {
    const std::string function = stepName(message);
    const auto deliver = reinterpret_cast<DeliverFunction>(Bundle().Symbol(function));
    const CallBegan call{function, "NULL", EventName(message)};
    return Recorded([&](Outcome&) { Bundle().RunCode(call, [&] { return deliver(nullptr), true; }); });
}

Outcome CheckRun::Recorded(const std::function<void(Outcome&)>& deliver) {
    VolumeState before;
    if (isVolumeWatched) before = CurrentVolume();
    Outcome outcome;
    current = &outcome;
    deliver(outcome);
    current = nullptr;
    channel.Send(CallReturned{{}, BlockEffect{outcome.flagsBefore, outcome.flagsAfter, outcome.otherBytes}});
    if (isVolumeWatched) outcome.changes = Compare(std::move(before), CurrentVolume());
    return outcome;
}

void CheckRun::RecordCall(const macplatform::RecordedCall& entry) {
    if (!bundle || !bundle->IsRunning() || entry.call == "CFPlugInInstanceCreate") return;
    if (current) current->calls.push_back(entry);
    if (atEachCall) atEachCall(entry);
}

void CheckRun::InjectFault(const macplatform::InjectedFault& fault) const {
    Trace("fault", fault.call + ": " + std::to_string(fault.code) + " after " + Counted(fault.skip, "call"));
    macplatform::InjectFault(fault);
}

void CheckRun::SetChosenButton(int button) {
    Trace("button", std::to_string(button));
    chosenButton = button;
}

void CheckRun::Trace(const char* kind, const std::string& text) const {
    if (place.isTraced) channel.Send(CheckStep{kind, text});
}

void CheckRun::Fail(const std::string& expected, const std::string& seen) {
    channel.Send(Finding{expected, seen});
}

void CheckRun::Expect(bool holds, const std::string& expected, const std::string& seen) {
    if (!holds) return Fail(expected, seen);
    Trace("expect", expected);
}

void CheckRun::ExpectPreference(const std::string& domain, const std::string& key, const std::string& value) {
    const VolumeState state = CurrentVolume();
    const std::string name = domain + ' ' + key + ": ";
    const auto file = state.preferences.find(domain);
    if (file == state.preferences.end()) {
        return Expect(value == "(none)", name + value, "no preferences file of this domain");
    }
    const auto found = file->second.values.find(key);
    const std::string seen =
        found == file->second.values.end() ? "(none)" : Describe(std::optional(found->second));
    Expect(seen == value, name + value, name + seen);
}

void CheckRun::ExpectNoEffect(const Outcome& outcome) {
    Expect(outcome.changes.Count() == 0, "no change on the volume", Describe(outcome.changes));
}

std::vector<std::string> CheckRun::ObjectsLeft() const {
    std::vector<std::string> left = macplatform::DescribeLiveObjects();
    left.erase(left.begin(),
               left.begin() + static_cast<std::ptrdiff_t>(std::min(objectsBefore, left.size())));
    return left;
}

void CheckRun::ForgetObjects() {
    Trace("objects", "counted from here");
    objectsBefore = macplatform::LiveObjectCount();
}

void CheckRun::Skip(const std::string& reason) {
    channel.Send(Skipped{reason});
    throw RunStopped{};
}

void CheckRun::RecordCell(std::int32_t product, std::int32_t language, const std::string& seen,
                          bool isRight) {
    channel.Send(TableCell{product, language, seen, isRight});
}

std::string Describe(const Changes& changes) {
    std::vector<std::string> lines;
    for (const PreferenceChange& change : changes.preferences) lines.push_back(Line(change));
    for (const FinderFlagChange& change : changes.finderFlags) lines.push_back(Line(change));
    for (const FileChange& change : changes.files)
        lines.push_back(Printable(change.path) + ": " + change.what);
    if (lines.empty()) return "nothing changed";
    return Counted(lines.size(), "change") + ": " + Join(lines, "; ");
}

std::string Describe(const std::vector<macplatform::Alert>& alerts) {
    std::vector<std::string> texts;
    texts.reserve(alerts.size());
    for (const macplatform::Alert& alert : alerts) texts.push_back(Describe(alert));
    return texts.empty() ? "no alert" : Join(texts, ", ");
}

} // namespace xcodhost
