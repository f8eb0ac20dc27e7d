#include "Command.h"
#include "Console.h"
#include "DisplayText.h"
#include "SharedOptions.h"
#include "process/Interruption.h"
#include "run/BundleRun.h"
#include "validate/report/HtmlPage.h"
#include "validate/report/JUnitReport.h"
#include "validate/report/ValidateReport.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <sched.h>
#include <string_view>
#include <unistd.h>

namespace xcodhost {

namespace {

struct ValidateOptions {
    std::vector<std::string> bundles;
    std::vector<std::string> include; ///< Ids, groups or shell patterns. Empty: all checks.
    std::vector<std::string> exclude;
    std::string junitFile; ///< Empty: no file.
    std::string htmlFile;  ///< Empty: no file.
    ValidationPlan plan;   ///< Without the bundle and its checks.
    bool isJson = false;
};

/// Returns the number of processors that this process may use.
unsigned processors() {
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (sched_getaffinity(0, sizeof allowed, &allowed) < 0) return 1;
    return static_cast<unsigned>(std::max(CPU_COUNT(&allowed), 1));
}

std::vector<const Check*> selectedChecks(const ValidateOptions& options) {
    std::vector<const Check*> checks = MatchingChecks(options.include);
    if (options.exclude.empty()) return checks;
    const auto excluded = MatchingChecks(options.exclude);
    const auto isExcluded = [&](const Check* check) {
        return std::find(excluded.begin(), excluded.end(), check) != excluded.end();
    };
    checks.erase(std::remove_if(checks.begin(), checks.end(), isExcluded), checks.end());
    return checks;
}

/// A progress line on the terminal. Each update overwrites the line. The destructor erases it.
class Progress {
public:
    Progress(std::string bundleName, std::size_t checkCount)
        : bundle(std::move(bundleName)), count(checkCount) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() {
        if (isTerminal) WriteError("\r\x1B[K");
    }
    void Show(std::size_t done) {
        if (!isTerminal || done == shown) return;
        shown = done;
        WriteError("\r\x1B[K" + std::to_string(done) + " of " + Counted(count, "check") + "  " +
                   Printable(bundle));
    }

private:
    std::string bundle;
    std::size_t count;
    std::size_t shown = SIZE_MAX;
    bool isTerminal = isatty(STDERR_FILENO) == 1;
};

/// Delivers both events for each product on a new sample volume. Returns nothing unless the checks have shown
/// that both events return. Uses French, because most language codes mean English.
std::vector<Installation> installEachProduct(const BundleResult& bundle) {
    const auto shown = std::count_if(bundle.checks.begin(), bundle.checks.end(), [](const CheckResult& one) {
        const std::string_view id = one.check->id;
        return one.state == CheckResult::State::kPassed &&
               (id == "dispatch.pre-install" || id == "dispatch.post-install");
    });
    std::vector<Installation> installations;
    if (shown < 2) return installations;
    for (const ProductContract& product : kProducts) {
        RunPlan plan;
        plan.bundle = bundle.bundle;
        for (const std::uint16_t message : {kPreInstall, kPostInstall}) {
            plan.blocks.emplace_back(kInstallerSelector, message, product.code, 1);
        }
        installations.push_back({product, RunBundle(plan).changes});
    }
    return installations;
}

void writeFile(const std::string& path, const std::string& text) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), &std::fclose);
    if (!file || std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() ||
        std::fflush(file.get()) != 0) {
        throw ToolFault::FromErrno(Printable(path));
    }
}

/// Throws UsageError if the file cannot be opened for writing. Called before the checks run, so that a wrong
/// path is reported at once.
void expectWritable(const std::string& path) {
    if (path.empty()) return;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "ab"), &std::fclose);
    if (!file) throw UsageError(ToolFault::FromErrno(Printable(path)).what());
}

ExitStatus validate(const ValidateOptions& options) {
    expectWritable(options.junitFile);
    expectWritable(options.htmlFile);
    ValidationPlan plan = options.plan;
    plan.checks = selectedChecks(options);
    std::vector<BundleResult> results;
    for (const std::string& bundle : options.bundles) {
        const Interruption interruption;
        plan.bundle = bundle;
        Progress progress(bundle, plan.checks.size());
        results.push_back(Validate(plan, interruption, [&](std::size_t done) { progress.Show(done); }));
    }
    const ValidationVerdict verdict = VerdictOf(results.data(), results.size());
    if (!options.junitFile.empty()) writeFile(options.junitFile, JUnitReport(results));
    if (!options.htmlFile.empty()) {
        for (BundleResult& result : results) result.installations = installEachProduct(result);
        writeFile(options.htmlFile, HtmlPage(results, verdict));
    }
    WriteResult(options.isJson ? ValidateReportJson(results, verdict)
                               : ValidateReport(results, verdict, Style()));
    return verdict.status;
}

Work describeValidate(CLI::App& parser) {
    const auto options = std::make_shared<ValidateOptions>();
    options->plan.atOnce = processors();
    parser.add_option("BUNDLE", options->bundles, "The folders of one or more bundles")
        ->type_name("DIR")
        ->required();
    parser
        .add_option("--include", options->include,
                    "Run these checks only: ids, groups such as steps, or shell patterns such as 'steps.*'")
        ->type_name("ID");
    parser.add_option("--exclude", options->exclude, "Do not run these checks")->type_name("ID");
    AddMac(parser);
    parser.add_flag("--trace", options->plan.isTraced,
                    "Print every step and expectation of the checks in order");
    AddJson(parser, options->isJson);
    parser.add_option("--junit", options->junitFile, "Write the results for a build server to this file")
        ->type_name("FILE");
    parser.add_option("--html", options->htmlFile, "Write one page for a browser to this file")
        ->type_name("FILE");
    AddTimeout(parser, options->plan.secondsPerCall, "; a check may take twenty times as long");
    AddInteger<std::uint8_t, 1>(
        parser, "--jobs", options->plan.atOnce,
        "Number of checks that run at the same time (default: the number of processors)");
    parser.footer(
        "Examples:\n"
        "  xcodhost validate PostInstall.bundle\n"
        "  xcodhost validate PostInstall.bundle --include steps --exclude steps.answer\n"
        "  xcodhost validate PostInstall.bundle --junit results.xml --html results.html\n\n"
        "Exit status: 0 all checks passed, 1 a check failed, 2 wrong usage, 3 the bundle cannot be loaded,\n"
        "4 it crashed or let an exception out, 5 time limit, 70 a fault of the tool itself.\n"
        "If several checks fail, the first of them decides.");
    return [options] { return validate(*options); };
}

} // namespace

const Command kValidateCommand = {"validate", "Check bundles against the plug-in contract", &describeValidate,
                                  true};

} // namespace xcodhost
