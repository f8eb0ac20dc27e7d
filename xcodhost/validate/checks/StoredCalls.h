#pragma once

/// Expectations about the places and the order in which a delivery stores values.

#include "validate/CheckRun.h"

#include <string>
#include <utility>
#include <vector>

namespace xcodhost {

/// A preferences domain and a key of it.
using PreferencePlace = std::pair<std::string, std::string>;

/// Expects that only preferences files changed, and in them only these places. If a wanted value is missing,
/// does not report changes of the same key or domain: the check that expects the value reports the failure.
void ExpectNothingBeside(CheckRun& run, const Changes& changes, const std::vector<PreferencePlace>& wanted);

/// Expects that the delivery made exactly these calls that store preferences or Finder information, in this
/// order. Each call is written with its first argument: `CFPreferencesSynchronize "com.korvane.updater"`.
void ExpectOrder(CheckRun& run, const Outcome& outcome, const std::vector<std::string>& wanted);

} // namespace xcodhost
