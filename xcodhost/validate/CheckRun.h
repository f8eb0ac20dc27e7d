#pragma once

/// What a check works with, in its child process: the bundle, scratch volumes, and a record of all that the
/// bundle does.

#include "bundle/LoadedBundle.h"
#include "volume/Changes.h"
#include "volume/SampleVolume.h"
#include "volume/VolumeState.h"

#include <macplatform/Alerts.h>
#include <macplatform/CallLog.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace xcodhost {

enum class Entry {
    kMain, ///< The interface's main entry.
    kStep, ///< The exported PreInstall or PostInstall, as the block's message says.
};

/// What one delivery did.
struct Outcome {
    std::uint32_t flagsBefore = 0;
    std::uint32_t flagsAfter = 0;
    std::string otherBytes; ///< "20 to 23" when bytes of or behind the block changed outside its error flags.
    std::vector<macplatform::Alert> alerts;
    std::vector<macplatform::RecordedCall> calls; ///< Of the platform.
    Changes changes;                              ///< On the volume.
};

/// An installer event for a product: selector 1000.
ParameterBlock Event(std::uint16_t message, std::int32_t product, std::int32_t language = 0);

class CheckRun {
public:
    /// `scratch` is an empty folder of the check's own.
    CheckRun(std::string bundlePath, std::string scratch, const Channel& parentChannel);
    ~CheckRun();
    CheckRun(const CheckRun&) = delete;
    CheckRun& operator=(const CheckRun&) = delete;

    const std::string& BundlePath() const { return bundlePath; }
    const Channel& Parent() const { return channel; }

    /// The startup volume is a new sample from now on. One is there from the start.
    void UseFreshVolume(const SampleVolume& sample = {});
    const std::string& Volume() const { return volume; }
    std::string OnVolume(const std::string& macPath) const { return volume + macPath; }
    VolumeState CurrentVolume() const;
    /// Writes the bytes to a file of the volume, in place of what is there.
    void Write(const std::string& macPath, const std::string& bytes) const;

    /// Opened at first use.
    LoadedBundle& Bundle();
    /// One instance's interface, kept until the check's end or `ReleaseInterface`.
    FunctionBlock** Interface();
    void ReleaseInterface();
    FactoryFunction Factory();

    /// A block at an address that is `misalignment` past a multiple of 16.
    Outcome Deliver(const ParameterBlock& block, Entry entry = Entry::kMain, std::size_t misalignment = 0);
    /// A step's call with a null block.
    Outcome DeliverNothing(std::uint16_t message);

    /// Whether deliveries tell what they changed on the volume, which takes most of their time; they do at
    /// first.
    void WatchVolume(bool watched) { isVolumeWatched = watched; }
    /// Which button is chosen in the alerts that follow; -1: not shown.
    void Answer(int button) { answer = button; }
    /// Called at each platform call of the bundle, after it; an empty one ends that.
    void AtEachCall(std::function<void(const macplatform::RecordedCall&)> call) {
        atEachCall = std::move(call);
    }

    void Fail(const std::string& expected, const std::string& seen);
    void Expect(bool holds, const std::string& expected, const std::string& seen) {
        if (!holds) Fail(expected, seen);
    }
    /// The value as the volume's file has it now, in the form of `Describe`: `(string) "en"`.
    void ExpectPreference(const std::string& domain, const std::string& key, const std::string& value);
    void ExpectNoEffect(const Outcome& outcome);
    /// Platform objects that are alive now and were not when the check began or `ForgetObjects` was called.
    std::vector<std::string> ObjectsLeft() const;
    void ForgetObjects();
    /// The check cannot be made on this machine.
    [[noreturn]] void Skip(const std::string& reason);
    /// A cell of the table of products by languages.
    void RecordCell(std::int32_t product, std::int32_t language, const std::string& seen, bool isRight);

private:
    void MapVolume() const;
    Outcome Recorded(const std::function<void(Outcome&)>& deliver);
    void Note(const macplatform::RecordedCall& entry);

    std::string bundlePath;
    std::string scratch;
    const Channel& channel;
    std::string volume;
    int volumes = 0;
    std::optional<LoadedBundle> bundle;
    FunctionBlock** interface = nullptr;
    std::size_t objectsBefore = 0;
    Outcome* current = nullptr;
    bool isVolumeWatched = true;
    int answer = 0;
    std::function<void(const macplatform::RecordedCall&)> atEachCall;
};

/// "3 changes: com.korvane.updater UpdateInterval: (none) -> (integer) 2; ..."
std::string Describe(const Changes& changes);
/// `Alert "text", Stop alert 5000`, or "no alert".
std::string Describe(const std::vector<macplatform::Alert>& alerts);

} // namespace xcodhost
