#include "RunCommand.h"

#include "Console.h"
#include "DisplayText.h"
#include "alert/AlertResponder.h"
#include "process/Interruption.h"
#include "run/BlockFile.h"
#include "run/Delivery.h"
#include "run/RunReport.h"
#include "run/RunReportJson.h"
#include "volume/ScratchVolume.h"
#include "volume/VolumeFolder.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>

namespace xcodhost {

namespace {

/// The time limit of a run, as a multiple of the time limit of a call.
constexpr double kCallsPerRun = 20;

std::vector<ParameterBlock> blocksFor(const RunOptions& options) {
    std::vector<ParameterBlock> blocks;
    if (!options.blockFile.empty()) blocks.push_back(ReadBlockFile(options.blockFile));
    for (const std::uint16_t message : options.messages) {
        blocks.emplace_back(options.selector, message, *options.product, options.language);
    }
    const bool areSteps = std::all_of(blocks.begin(), blocks.end(), [](const ParameterBlock& block) {
        return block.Message() == kPreInstall || block.Message() == kPostInstall;
    });
    if (options.isDirect && !areSteps) {
        throw UsageError("--direct: no exported function for this message; use message 2 (PreInstall) or 3 "
                         "(PostInstall)");
    }
    return blocks;
}

DeliveryPlan planFor(const RunOptions& options) {
    DeliveryPlan plan;
    plan.blocks = blocksFor(options);
    plan.bundle = std::filesystem::absolute(options.bundle).lexically_normal().string();
    plan.isDirect = options.isDirect;
    plan.recordsAll = options.hasTrace;
    return plan;
}

ChildLimits limitsFor(const RunOptions& options) {
    ChildLimits limits;
    limits.secondsPerCall = options.secondsPerCall;
    limits.secondsPerRun = options.secondsPerCall * kCallsPerRun;
    return limits;
}

/// The directory of the volume for the run: the given one, or a scratch volume, which the destructor removes.
class WorkVolume {
public:
    WorkVolume(const RunOptions& options, const Interruption& interruption) {
        if (!options.volume.empty()) folder = VolumeFolder(options.volume);
        if (!folder.empty() && !options.isDryRun) return;
        scratch.emplace(options.isDryRun ? ScratchFolder::Use::kCopies : ScratchFolder::Use::kSamples);
        if (options.isDryRun) {
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

RunResult RunBundle(const RunOptions& options) {
    DeliveryPlan plan = planFor(options);
    RunResult result;
    result.bundle = options.bundle;
    result.volume = options.volume;
    result.isDryRun = options.isDryRun;
    result.hasTrace = options.hasTrace;

    const Interruption interruption;
    const WorkVolume volume(options, interruption);
    plan.volume = volume.Folder();
    VolumeState before = ReadVolume(volume.Folder());
    AlertResponder responder(options.answers, interruption);
    Recorder recorder(result, responder);
    const ChildListener listener{
        [&](Message&& message) { recorder.Record(std::move(message)); },
        [&](macplatform::Alert&& alert) { return recorder.AnswerAlert(std::move(alert)); }};
    result.end = RunInChild([&](const Channel& channel) { Deliver(plan, channel); }, limitsFor(options),
                            listener, interruption);
    VolumeState after = ReadVolume(volume.Folder());
    result.problems = findProblems(result, before, after);
    result.changes = Compare(std::move(before), std::move(after));
    return result;
}

ExitStatus RunCommand(const RunOptions& options) {
    const RunResult result = RunBundle(options);
    const Verdict verdict = VerdictOf(result);
    if (verdict.status == ExitStatus::kNotLoaded) Note(result.loadFailure->text);
    WriteResult(options.isJson ? RunReportJson(result, verdict) : RunReport(result, verdict, Style()));
    return verdict.status;
}

} // namespace xcodhost
