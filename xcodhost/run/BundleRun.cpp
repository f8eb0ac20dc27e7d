#include "BundleRun.h"

#include "Console.h"
#include "Delivery.h"
#include "DisplayText.h"
#include "process/Interruption.h"
#include "volume/SampleVolume.h"
#include "volume/ScratchVolume.h"
#include "volume/VolumeFolder.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>

namespace xcodhost {

namespace {

/// The directory of the volume for the run: the given one, or a scratch volume, which the destructor removes.
class WorkVolume {
public:
    WorkVolume(const RunPlan& plan, const Interruption& interruption) {
        if (!plan.volume.empty()) folder = VolumeFolder(plan.volume);
        if (!folder.empty() && !plan.isDryRun) return;
        scratch.emplace(plan.isDryRun ? ScratchFolder::Use::kCopies : ScratchFolder::Use::kSamples);
        if (plan.isDryRun) {
            CopyVolume(folder, scratch->Path(), interruption);
        } else {
            MakeSampleVolume(scratch->Path(), {});
        }
        folder = scratch->Path();
    }
    const std::string& Folder() const { return folder; }

private:
    std::optional<ScratchFolder> scratch;
    std::string folder;
};

/// Records the messages of the child in the result of the run.
class Recorder {
public:
    Recorder(RunResult& runResult, AlertResponder& alertResponder)
        : result(runResult), responder(alertResponder) {}

    void Record(Message&& message) {
        std::visit([this](auto&& one) { Add(std::forward<decltype(one)>(one)); }, std::move(message));
    }

    int AnswerAlert(macplatform::Alert&& alert) {
        const auto [button, note] = responder.Respond(alert);
        const bool isStop = alert.kind == macplatform::Alert::Kind::kStop;
        if (!note.empty() && !isStop && !std::exchange(hasNoted, true)) {
            Note(Describe(alert) + " was not shown: " + note);
        }
        if (!result.calls.empty()) result.calls.back().alerts.push_back({std::move(alert), button, note});
        return button;
    }

private:
    void Add(CallBegan&& call) {
        result.calls.emplace_back();
        result.calls.back().call = std::move(call);
    }
    void Add(CallReturned&& returned) {
        if (!result.calls.empty()) result.calls.back().returned = std::move(returned);
    }
    void Add(macplatform::RecordedCall&& entry) {
        if (result.calls.empty()) return;
        CallRecord& call = result.calls.back();
        if (IsSynchronisationProblem(entry) && !entry.arguments.empty()) {
            const bool isStored = entry.result != "false";
            call.synchronisationProblems.push_back({Unquoted(entry.arguments.front()), entry.note, isStored});
        }
        if (result.hasTrace) call.platformCalls.push_back(std::move(entry));
    }
    void Add(LoadFailed&& failure) { result.loadFailure = std::move(failure); }
    void Add(ExceptionEscaped&& exception) { result.exception = std::move(exception); }
    void Add(ObjectsLeft&& left) { result.objectsLeft = std::move(left.objects); }
    // Only the children of `validate` send these messages.
    void Add(Finding&&) {}
    void Add(CheckStep&&) {}
    void Add(Skipped&&) {}
    void Add(TableCell&&) {}
    // `Children` handles these three messages.
    void Add(macplatform::Alert&&) {}
    void Add(ChildFault&&) {}
    void Add(Done&&) {}

    static std::string Unquoted(const std::string& text) {
        const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
        return isQuoted ? text.substr(1, text.size() - 2) : text;
    }

    RunResult& result;
    AlertResponder& responder;
    bool hasNoted = false;
};

/// Returns the line for a preferences file that cannot be read after the run.
std::string fileProblem(const std::string& domain, const PreferencesFile& file, const VolumeState& before,
                        const VolumeState& after, bool isNothingStored) {
    std::string text = Printable(domain) + ": " + Printable(file.path) + ' ' + file.problem;
    if (!IsUntouched(before, after, file.path)) return text + "; the run caused this";
    return text + "; the run left it unchanged" + (isNothingStored ? " and stored nothing" : "");
}

std::vector<std::string> findProblems(const RunResult& result, const VolumeState& before,
                                      const VolumeState& after) {
    std::map<std::string, std::string> lost; // for each domain, the first reason
    std::vector<std::string> problems = after.problems;
    for (const std::string& problem : before.problems) {
        const bool isOver =
            std::find(after.problems.begin(), after.problems.end(), problem) == after.problems.end();
        if (isOver) problems.push_back("before the run, " + problem);
    }
    for (const CallRecord& call : result.calls) {
        for (const SynchronisationProblem& problem : call.synchronisationProblems) {
            if (problem.isStored) {
                problems.push_back(Printable(problem.domain + ": " + problem.reason));
            } else {
                lost.emplace(problem.domain, problem.reason);
            }
        }
    }
    for (const auto& [domain, file] : after.preferences) {
        if (file.problem.empty()) continue;
        const bool isNothingStored = lost.erase(domain) > 0;
        problems.push_back(fileProblem(domain, file, before, after, isNothingStored));
    }
    for (const auto& [domain, reason] : lost) {
        problems.push_back(
            Printable(domain + ": nothing was stored" + (reason.empty() ? "" : ": " + reason)));
    }
    return problems;
}

} // namespace

RunResult RunBundle(const RunPlan& plan) {
    RunResult result;
    result.bundle = plan.bundle;
    result.volume = plan.volume;
    result.isDryRun = plan.isDryRun;
    result.hasTrace = plan.hasTrace;

    const Interruption interruption;
    const WorkVolume volume(plan, interruption);
    const DeliveryPlan delivery{std::filesystem::absolute(plan.bundle).lexically_normal().string(),
                                volume.Folder(), plan.blocks, plan.isDirect, plan.hasTrace};
    VolumeState before = ReadVolume(volume.Folder());
    AlertResponder responder(plan.answers, interruption);
    Recorder recorder(result, responder);
    const ChildListener listener{
        [&](Message&& message) { recorder.Record(std::move(message)); },
        [&](macplatform::Alert&& alert) { return recorder.AnswerAlert(std::move(alert)); }};
    result.end = RunInChild([&](const Channel& channel) { Deliver(delivery, channel); },
                            {plan.secondsPerCall}, listener, interruption);
    VolumeState after = ReadVolume(volume.Folder());
    result.problems = findProblems(result, before, after);
    result.changes = Compare(std::move(before), std::move(after));
    return result;
}

} // namespace xcodhost
