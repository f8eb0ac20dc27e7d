#include "RunCommand.h"

#include "Console.h"
#include "run/BlockFile.h"
#include "run/RunReport.h"
#include "run/RunReportJson.h"

#include <algorithm>

namespace xcodhost {

namespace {

std::vector<ParameterBlock> blocksFor(const RunOptions& options) {
    std::vector<ParameterBlock> blocks;
    if (!options.blockFile.empty()) blocks.push_back(ReadBlockFile(options.blockFile));
    for (const std::uint16_t message : options.messages) {
        blocks.emplace_back(options.selector, message, *options.product, options.language);
    }
    const bool areSteps = std::all_of(blocks.begin(), blocks.end(), [](const ParameterBlock& block) {
        return block.Message() == kPreInstall || block.Message() == kPostInstall;
    });
    if (options.plan.isDirect && !areSteps) {
        throw UsageError("--direct: no exported function for this message; use message 2 (PreInstall) or 3 "
                         "(PostInstall)");
    }
    return blocks;
}

} // namespace

ExitStatus RunCommand(const RunOptions& options) {
    RunPlan plan = options.plan;
    plan.blocks = blocksFor(options);
    const RunResult result = RunBundle(plan);
    const Verdict verdict = VerdictOf(result);
    if (verdict.status == ExitStatus::kNotLoaded) Note(result.loadFailure->text);
    WriteResult(options.isJson ? RunReportJson(result, verdict) : RunReport(result, verdict, Style()));
    return verdict.status;
}

} // namespace xcodhost
