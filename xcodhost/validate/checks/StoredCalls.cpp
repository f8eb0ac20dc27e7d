#include "StoredCalls.h"

#include "DisplayText.h"
#include "run/RunReport.h"

#include <algorithm>

namespace xcodhost {

namespace {

bool isAmong(const std::vector<PreferencePlace>& places, const PreferenceChange& change) {
    return std::find(places.begin(), places.end(), PreferencePlace{change.domain, change.key}) !=
           places.end();
}

bool isStored(const Changes& changes, const PreferencePlace& place) {
    return std::any_of(changes.preferences.begin(), changes.preferences.end(),
                       [&](const PreferenceChange& change) {
                           return change.domain == place.first && change.key == place.second;
                       });
}

/// Returns whether the change can be a missing wanted value that is stored in a wrong domain or
/// under a wrong key.
bool isStray(const Changes& changes, const PreferenceChange& change,
             const std::vector<PreferencePlace>& wanted) {
    return std::any_of(wanted.begin(), wanted.end(), [&](const PreferencePlace& place) {
        return !isStored(changes, place) && (place.second == change.key || place.first == change.domain);
    });
}

std::vector<std::string> storingCalls(const Outcome& outcome) {
    std::vector<std::string> stored;
    for (const macplatform::RecordedCall& entry : outcome.calls) {
        if (entry.call == "CFPreferencesSetValue" || entry.call == "CFPreferencesSynchronize" ||
            entry.call == "FSSetCatalogInfo") {
            stored.push_back(entry.call + (entry.arguments.empty() ? "" : ' ' + entry.arguments.front()));
        }
    }
    return stored;
}

} // namespace

void ExpectNothingBeside(CheckRun& run, const Changes& changes, const std::vector<PreferencePlace>& wanted) {
    for (const PreferenceChange& change : changes.preferences) {
        const bool isOurs = isAmong(wanted, change) || isStray(changes, change, wanted);
        run.Expect(isOurs, "no other preference changes", Line(change));
    }
    for (const FileChange& change : changes.files) {
        run.Fail("only preferences files change", Printable(change.path) + ": " + change.what);
    }
}

void ExpectOrder(CheckRun& run, const Outcome& outcome, const std::vector<std::string>& wanted) {
    const std::vector<std::string> stored = storingCalls(outcome);
    run.Expect(stored == wanted, ListText(wanted), ListText(stored));
}

} // namespace xcodhost
