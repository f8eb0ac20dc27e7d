#pragma once

#include "validate/CheckRun.h"

#include <string>
#include <utility>
#include <vector>

namespace xcodhost {

/// A preferences domain and a key of it.
using PreferencePlace = std::pair<std::string, std::string>;

/// Expects that the volume changed at these places and in preferences files only. A wanted key that is
/// missing at its place but stored elsewhere is not told: it is the matter of the check that wants it there.
void ExpectNothingBeside(CheckRun& run, const Changes& changes, const std::vector<PreferencePlace>& wanted);

/// Expects that the storing calls (of preferences and of Finder information) are these, in this order, each
/// with its first argument: `CFPreferencesSynchronize "com.korvane.updater"`.
void ExpectOrder(CheckRun& run, const Outcome& outcome, const std::vector<std::string>& wanted);

} // namespace xcodhost
