#pragma once

/// Declares the checks of `xcodhost validate`. A check verifies one statement that must be true for every
/// plug-in of this installer.

#include "ExitStatus.h"

#include <string>
#include <utility>
#include <vector>

namespace xcodhost {

class CheckRun;

/// One check.
struct Check {
    /// Runs the check in its own child process and reports each violation as a finding.
    using Body = void (*)(CheckRun&);

    Check(const char* name, Body checkBody, std::vector<Body> dependsOn = {})
        : id(name), dependencies(std::move(dependsOn)), body(checkBody) {}
    /// Sets the statement that the check verifies.
    Check& Claim(const char* text) {
        sentence = text;
        return *this;
    }
    /// Sets the explanation: why the statement must hold, and where to look if it does not.
    Check& Reason(const char* text) {
        why = text;
        return *this;
    }
    /// Sets the exit status of a failure. The default is `kFailed`.
    Check& FailsWith(ExitStatus status) {
        failure = status;
        return *this;
    }

    std::string id; ///< "group.name"; "name" inside of a group. An id never changes.
    const char* sentence = "";
    const char* why = "";
    /// The bodies of the checks that this check depends on. If one of these checks does not pass, this check
    /// is not run.
    std::vector<Body> dependencies;
    Body body;
    /// The exit status of the tool if this check is the first one that fails. A crash and an exceeded time
    /// limit have their own exit statuses.
    ExitStatus failure = ExitStatus::kFailed;
};

/// Checks of the same topic.
struct CheckGroup {
    const char* name;
    std::vector<Check> checks;
};

/// Returns all checks in the order in which the tool prints them.
const std::vector<Check>& AllChecks();

/// Returns the ids of the checks that a check depends on.
std::vector<std::string> DependenciesOf(const Check& check);

/// Returns the checks whose ids match at least one shell pattern. The name of a group matches all checks of
/// the group. Returns all checks if `patterns` is empty. Throws UsageError if a pattern matches no check.
std::vector<const Check*> MatchingChecks(const std::vector<std::string>& patterns);

} // namespace xcodhost
