#include "Validation.h"

#include "CheckRun.h"
#include "DisplayText.h"
#include "run/RunResult.h"
#include "volume/ScratchVolume.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <utility>

namespace xcodhost {

namespace {

constexpr std::size_t kFindingsKept = 20;
constexpr std::size_t kOutputKept = 2000;

std::string describeEnd(const ChildEnd& end) {
    switch (end.kind) {
    case ChildEnd::Kind::kSignalled: return "crashed: " + SignalName(end.code);
    case ChildEnd::Kind::kExited: return "ended the process: exit status " + std::to_string(end.code);
    case ChildEnd::Kind::kTimeLimitExceeded: return "no return within " + Seconds(end.seconds);
    case ChildEnd::Kind::kReportLimitExceeded: return "sent too much or invalid data to the host";
    case ChildEnd::Kind::kOutputLimitExceeded: return "printed too much";
    case ChildEnd::Kind::kFinished: break;
    }
    return {};
}

/// Collects the result of one check while its child process runs.
class RunningCheck {
public:
    RunningCheck(CheckResult& checkResult, std::vector<TableCell>& bundleTable, bool isCheckTraced)
        : result(checkResult), table(bundleTable), isTraced(isCheckTraced) {}

    void Take(Message&& message) {
        if (auto* call = std::get_if<CallBegan>(&message)) {
            lastCall = Printable(call->function) + '(' + Printable(call->arguments) + ')';
            Trace({"call", lastCall});
        } else if (auto* returned = std::get_if<CallReturned>(&message)) {
            if (returned->block) TraceEffect(*returned->block);
        } else if (auto* step = std::get_if<CheckStep>(&message)) {
            Trace(std::move(*step));
        } else if (auto* finding = std::get_if<Finding>(&message)) {
            Add(std::move(finding->expected), std::move(finding->seen), result.check->failure);
        } else if (auto* exception = std::get_if<ExceptionEscaped>(&message)) {
            const std::string what = exception->what.empty() ? "" : ' ' + PrintableQuoted(exception->what);
            Add("no exception leaves the bundle", "exception " + Printable(exception->type) + what,
                ExitStatus::kCrashed);
        } else if (auto* failure = std::get_if<LoadFailed>(&message)) {
            Add("the bundle can be loaded and supports the interface", failure->text, ExitStatus::kNotLoaded);
        } else if (auto* given = std::get_if<Skipped>(&message)) {
            result.reason = given->reason;
        } else if (auto* cell = std::get_if<TableCell>(&message)) {
            table.push_back(std::move(*cell));
        }
    }

    void Receive(std::string_view printed) {
        result.output += printed.substr(0, kOutputKept - std::min(kOutputKept, result.output.size()));
    }

    void End(const ChildEnd& end) {
        if (end.kind != ChildEnd::Kind::kFinished) {
            const bool isLate = end.kind == ChildEnd::Kind::kTimeLimitExceeded;
            Add("the call returns", describeEnd(end), isLate ? ExitStatus::kTimeLimit : ExitStatus::kCrashed);
        }
        result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        using State = CheckResult::State;
        result.state = !result.findings.empty() ? State::kFailed
                       : result.reason.empty()  ? State::kPassed
                                                : State::kNotRun;
    }

private:
    using Clock = std::chrono::steady_clock;

    void Trace(CheckStep step) {
        if (isTraced) result.trace.push_back(std::move(step));
    }

    /// Omits error flags that were 0 and stayed so.
    void TraceEffect(const BlockEffect& effect) {
        if (effect.errorFlagsBefore != 0 || effect.errorFlagsAfter != 0) {
            Trace({"returned", "error flags " + Hex(effect.errorFlagsBefore, 8) + " -> " +
                                   Hex(effect.errorFlagsAfter, 8)});
        }
        if (!effect.otherBytes.empty()) Trace({"returned", "changed bytes " + effect.otherBytes});
    }

    /// Adds a finding. The status of a crash, a time limit or a failed load replaces the status `kFailed` of
    /// earlier findings.
    void Add(std::string expected, std::string seen, ExitStatus status) {
        if (result.status == ExitStatus::kDone || result.status == ExitStatus::kFailed)
            result.status = status;
        Trace({"FAIL", expected});
        if (result.findings.size() == kFindingsKept) {
            ++result.moreFindings;
        } else {
            result.findings.push_back({lastCall, std::move(expected), std::move(seen)});
        }
    }

    CheckResult& result;
    std::vector<TableCell>& table;
    bool isTraced;
    std::string lastCall;
    Clock::time_point start = Clock::now();
};

/// Runs the check in the child process.
void runCheck(const Check& check, const CheckPlace& place, const Channel& channel) {
    try {
        CheckRun run(place, channel);
        check.body(run);
    } catch (const RunStopped&) { // the failure is already reported
    } catch (const std::exception& fault) {
        // For example, the bundle has removed the volume.
        channel.Send(Finding{"the check can run", fault.what()});
    }
}

/// Starts each check in a child process as soon as its dependencies have passed.
class Scheduler {
public:
    Scheduler(const ValidationPlan& validationPlan, BundleResult& bundleResult,
              const Interruption& pendingSignals)
        : plan(validationPlan), result(bundleResult), children(pendingSignals) {
        path = std::filesystem::absolute(plan.bundle).lexically_normal().string();
        for (const Check* check : plan.checks) {
            result.checks.emplace_back();
            result.checks.back().check = check;
        }
        phases.resize(result.checks.size(), Phase::kWaiting);
    }

    void Run(const std::function<void(std::size_t)>& onProgress) {
        for (std::size_t done = 0; done < phases.size(); onProgress(done)) {
            while (children.Count() < plan.atOnce && StartOne()) {
            }
            if (children.Count() > 0) children.Serve();
            done = static_cast<std::size_t>(std::count(phases.begin(), phases.end(), Phase::kDone));
        }
    }

private:
    enum class Phase { kWaiting, kRunning, kDone };
    enum class Readiness { kReady, kMustWait, kNever };

    /// Returns whether a check can start. Sets its `reason` if it can never start. Ignores dependencies that
    /// are not part of the plan.
    Readiness ReadinessOf(CheckResult& one) const {
        Readiness readiness = Readiness::kReady;
        for (const Check::Body body : one.check->dependencies) {
            const auto dependency =
                std::find_if(result.checks.begin(), result.checks.end(),
                             [&](const CheckResult& other) { return other.check->body == body; });
            if (dependency == result.checks.end()) continue;
            if (phases[static_cast<std::size_t>(dependency - result.checks.begin())] != Phase::kDone) {
                readiness = Readiness::kMustWait;
            } else if (dependency->state != CheckResult::State::kPassed) {
                one.reason = "depends on " + dependency->check->id;
                return Readiness::kNever;
            }
        }
        return readiness;
    }

    /// Starts the next check that is ready. Returns false if no check is ready.
    bool StartOne() {
        for (std::size_t place = 0; place < phases.size(); ++place) {
            if (phases[place] != Phase::kWaiting) continue;
            const Readiness readiness = ReadinessOf(result.checks[place]);
            if (readiness == Readiness::kNever) phases[place] = Phase::kDone;
            if (readiness != Readiness::kReady) continue;
            Start(place);
            return true;
        }
        return false;
    }

    void Start(std::size_t place) {
        CheckResult& one = result.checks[place];
        const std::string folder = scratch.Path() + '/' + one.check->id;
        std::filesystem::create_directory(folder);
        const auto record = std::make_shared<RunningCheck>(one, result.table, plan.isTraced);
        ChildListener listener{
            [record](Message&& message) { record->Take(std::move(message)); },
            [](macplatform::Alert&&) { return -1; }, // the child process answers the alerts
            [record](std::string_view printed) { record->Receive(printed); }};
        phases[place] = Phase::kRunning;
        children.Start(
            [&](const Channel& channel) {
                runCheck(*one.check, {path, folder, plan.isTraced}, channel);
            },
            {plan.secondsPerCall}, std::move(listener),
            [this, record, place, folder](const ChildEnd& end) {
                record->End(end);
                phases[place] = Phase::kDone;
                std::error_code ignored;
                std::filesystem::remove_all(folder, ignored);
            });
    }

    const ValidationPlan& plan;
    BundleResult& result;
    ScratchFolder scratch{ScratchFolder::Use::kSamples}; // declared before the children: it must outlive them
    Children children;
    std::string path;
    std::vector<Phase> phases; ///< One for each element of `result.checks`.
};

} // namespace

std::size_t BundleResult::Count(CheckResult::State state) const {
    return static_cast<std::size_t>(std::count_if(
        checks.begin(), checks.end(), [&](const CheckResult& one) { return one.state == state; }));
}

const CheckResult* BundleResult::FirstFailure() const {
    const auto failure = std::find_if(checks.begin(), checks.end(), [](const CheckResult& one) {
        return one.state == CheckResult::State::kFailed;
    });
    return failure == checks.end() ? nullptr : &*failure;
}

ValidationVerdict VerdictOf(const BundleResult* bundles, std::size_t count) {
    std::size_t passed = 0;
    std::size_t failed = 0;
    const CheckResult* first = nullptr;
    for (const BundleResult* bundle = bundles; bundle != bundles + count; ++bundle) {
        passed += bundle->Count(CheckResult::State::kPassed);
        failed += bundle->Count(CheckResult::State::kFailed);
        if (!first) first = bundle->FirstFailure();
    }
    const std::string run = std::to_string(passed + failed);
    if (first) {
        return {first->status,
                "FAIL " + std::to_string(failed) + " of " + run + " (first: " + first->check->id + ')'};
    }
    if (passed == 0) return {ExitStatus::kFailed, "FAIL 0 of 0 (no check was run)"};
    return {ExitStatus::kDone, "PASS " + Counted(passed, "check")};
}

BundleResult Validate(const ValidationPlan& plan, const Interruption& interruption,
                      const std::function<void(std::size_t)>& onProgress) {
    BundleResult result;
    result.bundle = plan.bundle;
    Scheduler(plan, result, interruption).Run(onProgress);
    return result;
}

} // namespace xcodhost
