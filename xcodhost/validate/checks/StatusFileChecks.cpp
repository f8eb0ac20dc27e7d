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

/// Delivers post-install for an existing status file that the plug-in fails to open.
Outcome deliverUnreadable(CheckRun& run, std::uint32_t errorFlags) {
    run.UseFreshVolume(withStatus("UpdatesDisabled"));
    run.Interface();
    for (const char* const call : {"fopen", "open", "openat"}) run.InjectFault({call, EACCES, 0});
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
        run.Expect(outcome.flagsAfter == given, "error flags " + Hex(given, 8) + " are kept",
                   Hex(outcome.flagsAfter, 8));
        run.Expect(outcome.alerts.empty(), "no alert", Describe(outcome.alerts));
    }
}

void unreadableFileLeavesTheRest(CheckRun& run) {
    const Outcome outcome = deliverUnreadable(run, 0);
    run.ExpectPreference("com.korvane.audioplugins.Fusewright", kLanguageKey, "(string) \"en\"");
    run.Expect(outcome.changes.finderFlags.size() == 2, "the language and both Finder flags are stored",
               Describe(outcome.changes));
}

void fileIsOnlyRead(CheckRun& run) {
    for (const StatusText& text : statusTexts()) {
        run.UseFreshVolume(withStatus(text.bytes));
        const Outcome outcome = run.Deliver(Event(kPostInstall, 4900));
        for (const FileChange& change : outcome.changes.files) {
            run.Expect(change.path != kStatusFile, "an unchanged status file", change.what);
        }
        std::ifstream in(run.OnVolume(kStatusFile), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        run.Expect(bytes == text.bytes, "a status file of " + Counted(text.bytes.size(), "byte"),
                   Counted(bytes.size(), "byte"));
    }
}

} // namespace

void IntervalFollowsText(CheckRun& run) {
    for (const StatusText& text : statusTexts()) {
        run.UseFreshVolume(withStatus(text.bytes));
        run.Deliver(Event(kPostInstall, 4900));
        run.ExpectPreference(kUpdaterDomain, kIntervalKey, intervalValue(text.interval));
    }
}

const std::vector<Check::Body> kNeedsEvent = {&PostInstallReturns};

const CheckGroup kStatusFileChecks = {
    "status-file",
    {
        Check("interval", &IntervalFollowsText, kNeedsEvent)
            .Claim("UpdateInterval is 2 if the status file begins with UpdatesEnabled, and 0 otherwise.")
            .Reason("Post-install compares the first 14 bytes and distinguishes upper and lower case. A NUL "
                    "ends the text. The check uses fifteen files. Some are empty, long or damaged."),
        Check("products", &everyProductSetsInterval, {&IntervalFollowsText})
            .Claim("Post-install reads the status file for every known product.")
            .Reason("All products share the updater."),
        Check("missing", &missingFileMeansDefault, kNeedsEvent)
            .Claim("UpdateInterval is 2 if there is no status file.")
            .Reason("The updater has not run yet."),
        Check("no-failure", &noFailureNoText, kNeedsEvent)
            .Claim("Post-install stores InstallStatus only if it fails to read the status file.")
            .Reason("The updater treats InstallStatus as a failure."),
        Check("unreadable", &unreadableFileMeansDefault, {&IntervalFollowsText})
            .Claim("UpdateInterval is 2 if the status file cannot be read.")
            .Reason("The check makes the call that opens the file fail, as for a file of another user."),
        Check("failure-text", &unreadableFileIsReported, {&IntervalFollowsText})
            .Claim("InstallStatus is \"Error opening file\" if the status file cannot be opened.")
            .Reason("The updater reads the reason of the failure from InstallStatus."),
        Check("failure-silent", &unreadableFileIsNoError, kNeedsEvent)
            .Claim("An unreadable status file changes no error bit and shows no alert.")
            .Reason("The failure concerns only the updater."),
        Check("failure-rest", &unreadableFileLeavesTheRest,
              {&unreadableFileIsReported, &LanguageIsStored, &FolderFlagsAreSet, &IconIsHidden,
               &OtherItemsKeepFlags})
            .Claim("Post-install stores the language and the Finder flags if the status file cannot be read.")
            .Reason("The failure concerns only the updater."),
        Check("kept", &fileIsOnlyRead, kNeedsEvent)
            .Claim("Post-install does not change the status file.")
            .Reason("The status file belongs to the updater."),
    }};

} // namespace xcodhost
