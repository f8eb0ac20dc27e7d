#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

#include <cerrno>
#include <fstream>
#include <iterator>

namespace xcodhost {

namespace {

struct StatusText {
    std::string bytes;
    const char* interval;
};

const std::vector<StatusText>& statusTexts() {
    static const std::vector<StatusText> texts = {
        {"UpdatesEnabled", "2"},
        {"UpdatesEnabled\r\n", "2"},
        {"UpdatesEnabled=no", "2"},
        {std::string("UpdatesEnabled\0tail", 19), "2"},
        {"UpdatesEnabled" + std::string(100000, '\n'), "2"},
        {"", "0"},
        {"Updates", "0"},
        {"UpdatesEnable", "0"},
        {"updatesenabled", "0"},
        {"UpdatesDisabled", "0"},
        {" UpdatesEnabled", "0"},
        {std::string("Updates\0Enabled", 15), "0"},
        {std::string("\0", 1), "0"},
        {"\xEF\xBB\xBFUpdatesEnabled", "0"},
        {"\xFF\xFE\x80", "0"},
    };
    return texts;
}

SampleVolume withStatus(std::optional<std::string> status) {
    SampleVolume sample;
    sample.status = std::move(status);
    return sample;
}

std::string intervalValue(const char* interval) { return std::string("(integer) ") + interval; }

void intervalFollowsText(CheckRun& run) {
    for (const StatusText& text : statusTexts()) {
        run.UseFreshVolume(withStatus(text.bytes));
        run.Deliver(Event(kPostInstall, 4900));
        run.ExpectPreference(kUpdaterDomain, kIntervalKey, intervalValue(text.interval));
    }
}

void everyProductSetsInterval(CheckRun& run) {
    for (const ProductContract& product : kProducts) {
        run.UseFreshVolume(withStatus("UpdatesDisabled"));
        run.Deliver(Event(kPostInstall, product.code));
        run.ExpectPreference(kUpdaterDomain, kIntervalKey, intervalValue("0"));
    }
}

void missingFileMeansDefault(CheckRun& run) {
    run.UseFreshVolume(withStatus(std::nullopt));
    run.Deliver(Event(kPostInstall, 4900));
    run.ExpectPreference(kUpdaterDomain, kIntervalKey, intervalValue("2"));
}

void noFailureNoText(CheckRun& run) {
    for (const auto& status : {std::optional<std::string>(), std::optional<std::string>("UpdatesDisabled")}) {
        run.UseFreshVolume(withStatus(status));
        run.Deliver(Event(kPostInstall, 4900));
        run.ExpectPreference(kUpdaterDomain, kFailureKey, "(none)");
    }
}

/// The file is there, and the first call that opens it is refused.
Outcome deliverUnreadable(CheckRun& run, std::uint32_t errorFlags) {
    run.UseFreshVolume(withStatus("UpdatesDisabled"));
    run.Interface();
    for (const char* const call : {"fopen", "open", "openat"}) macplatform::InjectFault({call, EACCES, 0});
    ParameterBlock block = Event(kPostInstall, 4900);
    block.SetErrorFlags(errorFlags);
    Outcome outcome = run.Deliver(block);
    macplatform::CancelInjectedFaults();
    return outcome;
}

void unreadableFileMeansDefault(CheckRun& run) {
    deliverUnreadable(run, 0);
    run.ExpectPreference(kUpdaterDomain, kIntervalKey, intervalValue("2"));
}

void unreadableFileIsReported(CheckRun& run) {
    deliverUnreadable(run, 0);
    run.ExpectPreference(kUpdaterDomain, kFailureKey, "(string) \"Error opening file\"");
}

void unreadableFileIsNoError(CheckRun& run) {
    for (const std::uint32_t given : {0U, 0xFFFFFFFEU}) {
        const Outcome outcome = deliverUnreadable(run, given);
        run.Expect(outcome.flagsAfter == given, "error flags " + Hex(given, 8) + " stay",
                   Hex(outcome.flagsAfter, 8));
        run.Expect(outcome.alerts.empty(), "no alert", Describe(outcome.alerts));
    }
}

void unreadableFileLeavesTheRest(CheckRun& run) {
    const Outcome outcome = deliverUnreadable(run, 0);
    run.ExpectPreference("com.korvane.audioplugins.Fusewright", kLanguageKey, "(string) \"en\"");
    run.Expect(outcome.changes.finderFlags.size() == 2,
               "the language and both Finder flags are stored all the same", Describe(outcome.changes));
}

void fileIsOnlyRead(CheckRun& run) {
    for (const StatusText& text : statusTexts()) {
        run.UseFreshVolume(withStatus(text.bytes));
        const Outcome outcome = run.Deliver(Event(kPostInstall, 4900));
        for (const FileChange& change : outcome.changes.files) {
            run.Expect(change.path != kStatusFile, "the status file stays as it is", change.what);
        }
        std::ifstream in(run.OnVolume(kStatusFile), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        run.Expect(bytes == text.bytes, "the status file keeps its " + Counted(text.bytes.size(), "byte"),
                   Counted(bytes.size(), "byte"));
    }
}

} // namespace

std::vector<Check> StatusFileChecks() {
    const std::vector<const char*> event = {"dispatch.post-install"};
    return {
        {"status-file.interval",
         "UpdateInterval is 2 where the status file begins with UpdatesEnabled, and else 0.",
         "The first 14 bytes count, upper and lower case apart; a NUL ends the text. Fifteen files are "
         "tried, an empty one, "
         "a long one and damaged ones among them.",
         event, &intervalFollowsText},
        {"status-file.products",
         "Every known product reads the status file.",
         "The updater is shared by all products.",
         {"status-file.interval"},
         &everyProductSetsInterval},
        {"status-file.missing", "Without a status file UpdateInterval is 2.", "The updater has not run yet.",
         event, &missingFileMeansDefault},
        {"status-file.no-failure", "InstallStatus is not stored unless reading failed.",
         "The updater takes it for a failure.", event, &noFailureNoText},
        {"status-file.unreadable",
         "With a status file that cannot be read UpdateInterval is 2.",
         "Opening the file is refused, as for a file of another user.",
         {"status-file.interval"},
         &unreadableFileMeansDefault},
        {"status-file.failure-text",
         "With a status file that cannot be opened InstallStatus says \"Error opening file\".",
         "The updater reads the reason there.",
         {"status-file.interval"},
         &unreadableFileIsReported},
        {"status-file.failure-silent",
         "A status file that cannot be read is no error to the installer or the user.",
         "No error bit is set or cleared, no alert is shown.", event, &unreadableFileIsNoError},
        {"status-file.failure-rest",
         "Language and Finder flags are stored although the status file cannot be read.",
         "The failure concerns the updater alone.",
         {"status-file.failure-text", "post-install.language", "finder.folder", "finder.icon",
          "finder.other-items"},
         &unreadableFileLeavesTheRest},
        {"status-file.kept", "The status file is only read.", "It is the updater's own.", event,
         &fileIsOnlyRead},
    };
}

} // namespace xcodhost
