#include "Check.h"

#include "DisplayText.h"
#include "validate/checks/Groups.h"

#include <algorithm>
#include <fnmatch.h>

namespace xcodhost {

namespace {

using Group = std::vector<Check> (*)();

std::vector<Check> gathered() {
    std::vector<Check> all;
    for (const Group group :
         {&BundleChecks, &FactoryChecks, &ReferenceChecks, &InterfaceChecks, &DispatchChecks, &BlockChecks,
          &StepChecks, &PreInstallChecks, &PostInstallChecks, &StatusFileChecks, &FinderChecks, &FaultChecks,
          &ProcessChecks}) {
        const std::vector<Check> checks = group();
        all.insert(all.end(), checks.begin(), checks.end());
    }
    return all;
}

bool isMatch(const std::string& pattern, const Check& check) {
    const std::string id = check.id;
    return fnmatch(pattern.c_str(), id.c_str(), 0) == 0 || pattern == id.substr(0, id.find('.'));
}

} // namespace

const std::vector<Check>& AllChecks() {
    static const std::vector<Check> checks = gathered();
    return checks;
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
