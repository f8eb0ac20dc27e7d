#include "Check.h"

#include "DisplayText.h"
#include "validate/checks/Groups.h"

#include <algorithm>
#include <fnmatch.h>

namespace xcodhost {

namespace {

std::vector<Check> gathered() {
    std::vector<Check> all;
    for (const CheckGroup* const group :
         {&kBundleChecks, &kFactoryChecks, &kFunctionBlockChecks, &kReferencesChecks, &kInterfaceChecks,
          &kDispatchChecks, &kBlockChecks, &kStepsChecks, &kPreInstallChecks, &kPostInstallChecks,
          &kPreferencesChecks, &kStatusFileChecks, &kFinderChecks, &kFaultsChecks, &kProcessChecks,
          &kVolumeChecks}) {
        for (Check check : group->checks) {
            check.id = group->name + ('.' + check.id);
            all.push_back(std::move(check));
        }
    }
    return all;
}

bool isMatch(const std::string& pattern, const Check& check) {
    return fnmatch(pattern.c_str(), check.id.c_str(), 0) == 0 ||
           pattern == check.id.substr(0, check.id.find('.'));
}

} // namespace

const std::vector<Check>& AllChecks() {
    static const std::vector<Check> checks = gathered();
    return checks;
}

std::vector<std::string> DependenciesOf(const Check& check) {
    std::vector<std::string> ids;
    for (const Check::Body body : check.dependencies) {
        const auto& all = AllChecks();
        ids.push_back(
            std::find_if(all.begin(), all.end(), [&](const Check& one) { return one.body == body; })->id);
    }
    return ids;
}

std::vector<const Check*> MatchingChecks(const std::vector<std::string>& patterns) {
    std::vector<const Check*> matching;
    for (const Check& check : AllChecks()) {
        if (patterns.empty() ||
            std::any_of(patterns.begin(), patterns.end(),
                        [&](const std::string& pattern) { return isMatch(pattern, check); })) {
            matching.push_back(&check);
        }
    }
    for (const std::string& pattern : patterns) {
        if (std::none_of(AllChecks().begin(), AllChecks().end(),
                         [&](const Check& check) { return isMatch(pattern, check); })) {
            throw UsageError(PrintableQuoted(pattern) +
                             " matches no check; \"xcodhost list checks\" prints all ids");
        }
    }
    return matching;
}

} // namespace xcodhost
