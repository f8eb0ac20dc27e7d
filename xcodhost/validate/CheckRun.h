#pragma once

/// Declares the environment of one check in its child process: the bundle, temporary volumes, and the
/// recorded calls and effects of the bundle.

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

/// The function to which a block is delivered.
enum class Entry {
    kMain, ///< The interface's main entry.
    kStep, ///< The exported PreInstall or PostInstall, selected by the block's message.
};

/// The effects of one delivery.
struct Outcome {
    std::uint32_t flagsBefore = 0;
    std::uint32_t flagsAfter = 0;
    /// "20 to 23": the changed bytes in or after the block, except its error flags. "before the block" if
    /// bytes before the block changed. Empty if no byte changed.
    std::string otherBytes;
    std::vector<macplatform::Alert> alerts;
    std::vector<macplatform::RecordedCall> calls; ///< Platform calls of the bundle.
    Changes changes;                              ///< On the volume.
};

/// Returns the block of an installer event for a product, with selector 1000.
ParameterBlock Event(std::uint16_t message, std::int32_t product, std::int32_t language = 0);

/// Where a check runs.
struct CheckPlace {
    std::string bundle;    ///< The absolute path of the bundle.
    std::string scratch;   ///< An empty directory that no other check uses.
    bool isTraced = false; ///< Whether the steps of the check are sent to the parent process.
};

/// The environment of one check. Sets the alert responder and the call observer of the process.
class CheckRun {
public:
    CheckRun(CheckPlace checkPlace, const Channel& parentChannel);
    ~CheckRun();
    CheckRun(const CheckRun&) = delete;
    CheckRun& operator=(const CheckRun&) = delete;

    const CheckPlace& Place() const { return place; }
    const std::string& BundlePath() const { return place.bundle; }
    const Channel& Parent() const { return channel; }

    /// Replaces the startup volume by a new sample volume. The constructor creates the first sample volume.
    void UseFreshVolume(const SampleVolume& sample = {});
    const std::string& Volume() const { return volume; }
    std::string OnVolume(const std::string& macPath) const { return volume + macPath; }
    /// Returns the current state of the startup volume.
    VolumeState CurrentVolume() const;
    /// Writes a file of the volume. Replaces the file if it exists. Throws ToolFault on an error.
    void Write(const std::string& macPath, const std::string& bytes) const;

    /// Returns the bundle. The first call loads the bundle.
    LoadedBundle& Bundle();
    /// Returns the interface of an instance. The first call, and the first call after `ReleaseInterface`,
    /// creates the instance. The interface is valid until `ReleaseInterface` is called or the check ends.
    FunctionBlock** Interface();
    void ReleaseInterface();
    /// Returns the factory function of the bundle.
    FactoryFunction Factory();

    /// Delivers a block. The address of the block is `misalignment` bytes after a multiple of 16.
    Outcome Deliver(const ParameterBlock& block, Entry entry = Entry::kMain, std::size_t misalignment = 0);
    /// Calls the exported PreInstall or PostInstall, depending on the message, with a null block.
    Outcome DeliverNullBlock(std::uint16_t message);

    /// Sets whether deliveries record the changes of the volume. The default is true. The comparison of the
    /// volume takes most of the time of a delivery.
    void WatchVolume(bool watched) { isVolumeWatched = watched; }
    /// Makes a platform call of the bundle fail, see `macplatform::InjectFault`.
    void InjectFault(const macplatform::InjectedFault& fault) const;
    /// Sets the index of the button that answers the following alerts. The default is 0. With -1, the alerts
    /// are not shown.
    void SetChosenButton(int button);
    /// Sets the function that is called after each platform call of the bundle. An empty function means that
    /// none is called.
    void SetCallListener(std::function<void(const macplatform::RecordedCall&)> call) {
        atEachCall = std::move(call);
    }

    /// Reports a step of the check if the steps are traced. `kind` is a word.
    void Trace(const char* kind, const std::string& text) const;
    /// Reports a finding.
    void Fail(const std::string& expected, const std::string& seen);
    /// Reports a finding if the condition is false.
    void Expect(bool holds, const std::string& expected, const std::string& seen);
    /// Expects a value in the preferences file on the volume. `value` is the value as `Describe` prints it,
    /// for example `(string) "en"`.
    void ExpectPreference(const std::string& domain, const std::string& key, const std::string& value);
    /// Expects that the delivery changed nothing on the volume.
    void ExpectNoEffect(const Outcome& outcome);
    /// Returns the live platform objects that were created after the first call of `Bundle` and the last call
    /// of `ForgetObjects`.
    std::vector<std::string> ObjectsLeft() const;
    /// Excludes the present platform objects from `ObjectsLeft`.
    void ForgetObjects();
    /// Reports the check as not run and ends the check. A check calls this function if it cannot run on this
    /// machine.
    [[noreturn]] void Skip(const std::string& reason);
    /// Reports a cell of the table of products and languages.
    void RecordCell(std::int32_t product, std::int32_t language, const std::string& seen, bool isRight);

private:
    void ActivateVolume() const;
    Outcome Recorded(const std::function<void(Outcome&)>& deliver);
    void RecordCall(const macplatform::RecordedCall& entry);

    CheckPlace place;
    const Channel& channel;
    std::string volume;
    int volumes = 0;
    std::optional<LoadedBundle> bundle;
    FunctionBlock** interface = nullptr;
    std::size_t objectsBefore = 0;
    Outcome* current = nullptr;
    bool isVolumeWatched = true;
    int chosenButton = 0;
    std::function<void(const macplatform::RecordedCall&)> atEachCall;
};

/// Returns text such as "3 changes: com.korvane.updater UpdateInterval: (none) -> (integer) 2; ..."
std::string Describe(const Changes& changes);
/// Returns text such as `Alert "text", Stop alert 5000`, or "no alert".
std::string Describe(const std::vector<macplatform::Alert>& alerts);

} // namespace xcodhost
