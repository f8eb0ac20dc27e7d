#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

#include <algorithm>

namespace xcodhost {

namespace {

/// Only whether the calls come back: what they do is looked at by others.
void deliverAll(CheckRun& run, std::uint16_t message) {
    run.WatchVolume(false);
    for (const ProductContract& product : kProducts) run.Deliver(Event(message, product.code));
    for (const std::int32_t product : kUnknownProducts) run.Deliver(Event(message, product));
}
void preInstallReturns(CheckRun& run) { deliverAll(run, kPreInstall); }
void postInstallReturns(CheckRun& run) {
    deliverAll(run, kPostInstall);
    for (const LanguageContract& language : kLanguages) {
        run.Deliver(Event(kPostInstall, 4900, language.code));
    }
    for (const std::int32_t language : kOtherLanguages) run.Deliver(Event(kPostInstall, 4900, language));
}

bool isVersionKey(const PreferenceChange& change) { return change.key.rfind("InstalledProducts/", 0) == 0; }
bool isPostInstallKey(const PreferenceChange& change) {
    return change.key == kIntervalKey || change.key == kLanguageKey;
}

void preInstallRunsAlone(CheckRun& run) {
    const Changes changes = run.Deliver(Event(kPreInstall, 4900)).changes;
    const bool isAlone =
        std::none_of(changes.preferences.begin(), changes.preferences.end(), &isPostInstallKey) &&
        changes.finderFlags.empty();
    run.Expect(isAlone, "message 2 has the effects of the pre-install step only", Describe(changes));
}

void postInstallRunsAlone(CheckRun& run) {
    const Changes changes = run.Deliver(Event(kPostInstall, 4900)).changes;
    run.Expect(std::none_of(changes.preferences.begin(), changes.preferences.end(), &isVersionKey),
               "message 3 has the effects of the post-install step only", Describe(changes));
}

constexpr std::uint16_t kOtherMessages[] = {0,      1,      4,      5,    6,      0x0102,
                                            0x0103, 0x0202, 0x0300, 1000, 0x8002, 0xFFFF};

void otherMessagesDoNothing(CheckRun& run) {
    for (const std::uint16_t message : kOtherMessages) {
        const Outcome outcome = run.Deliver(Event(message, 4900));
        run.ExpectNoEffect(outcome);
        run.Expect(outcome.flagsAfter == 0, "error flags unchanged", Hex(outcome.flagsAfter, 8));
        run.Expect(outcome.alerts.empty(), "no alert", Describe(outcome.alerts));
    }
}

constexpr std::uint16_t kWrongSelectors[] = {0, 7, 999, 1001, 1000 + 256, 0x8000 | 1000, 0xFFFF};

template <typename Inspect>
void forEachWrongSelector(CheckRun& run, Inspect inspect) {
    for (const std::uint16_t selector : kWrongSelectors) {
        for (const std::uint16_t message : {kPreInstall, kPostInstall, std::uint16_t{4}}) {
            inspect(run.Deliver({selector, message, 4900, 0}));
        }
    }
}

void wrongSelectorSetsBit(CheckRun& run) {
    forEachWrongSelector(run, [&](const Outcome& outcome) {
        run.Expect((outcome.flagsAfter & 1) != 0, "bit 0 of the error flags is set",
                   Hex(outcome.flagsAfter, 8));
    });
}
void wrongSelectorIsSilent(CheckRun& run) {
    forEachWrongSelector(run, [&](const Outcome& outcome) {
        run.Expect(outcome.alerts.empty(), "the main entry shows no alert", Describe(outcome.alerts));
    });
}
void wrongSelectorDoesNothing(CheckRun& run) {
    forEachWrongSelector(run, [&](const Outcome& outcome) { run.ExpectNoEffect(outcome); });
}

VolumeState afterEvents(CheckRun& run, std::initializer_list<std::uint16_t> messages) {
    run.UseFreshVolume();
    for (const std::uint16_t message : messages) run.Deliver(Event(message, 4900, 11));
    return run.CurrentVolume();
}

/// Files of two volumes never have the same inodes, and their times are no matter.
VolumeState withoutIdentity(VolumeState state) {
    for (auto& [path, item] : state.items) {
        item.device = item.inode = 0;
        item.modified = 0;
    }
    return state;
}

void expectSameVolume(CheckRun& run, VolumeState wanted, VolumeState seen, const char* expected) {
    const Changes changes = Compare(withoutIdentity(std::move(wanted)), withoutIdentity(std::move(seen)));
    run.Expect(changes.Count() == 0, expected, Describe(changes));
}

void orderDoesNotMatter(CheckRun& run) {
    const VolumeState right = afterEvents(run, {kPreInstall, kPostInstall});
    const VolumeState wrong = afterEvents(run, {kPostInstall, kPreInstall});
    expectSameVolume(run, right, wrong, "post-install before pre-install leaves the same volume");
}

void secondRunChangesNothing(CheckRun& run) {
    for (const ProductContract& product : kProducts) {
        const auto deliverBoth = [&] {
            const Changes before = run.Deliver(Event(kPreInstall, product.code)).changes;
            const Changes after = run.Deliver(Event(kPostInstall, product.code)).changes;
            return std::pair(before, after);
        };
        deliverBoth();
        const auto [before, after] = deliverBoth();
        run.Expect(before.Count() == 0, "a second pre-install changes nothing", Describe(before));
        run.Expect(after.Count() == 0, "a second post-install changes nothing", Describe(after));
    }
}

void eachEventTwiceIsTheSame(CheckRun& run) {
    const VolumeState once = afterEvents(run, {kPreInstall, kPostInstall});
    const VolumeState twice = afterEvents(run, {kPreInstall, kPreInstall, kPostInstall, kPostInstall});
    expectSameVolume(run, once, twice, "events that come twice leave the same volume");
}

void twoInstancesWork(CheckRun& run) {
    const VolumeState one = afterEvents(run, {kPreInstall, kPostInstall});
    run.UseFreshVolume();
    FunctionBlock** const other = run.Bundle().MakeInstance();
    run.Deliver(Event(kPreInstall, 4900, 11));
    run.ReleaseInterface();
    const ULONG count =
        run.Bundle().RunCode({"AddRef", "the other instance", {}}, [&] { return (*other)->AddRef(other); });
    run.Expect(count == 2, "the other instance lives on with 1 reference", std::to_string(count - 1));
    run.Deliver(Event(kPostInstall, 4900, 11)); // through a third
    expectSameVolume(run, one, run.CurrentVolume(), "events through two instances leave the same volume");
}

} // namespace

std::vector<Check> DispatchChecks() {
    const std::vector<const char*> events = {"dispatch.pre-install", "dispatch.post-install"};
    return {
        {"dispatch.pre-install",
         "The pre-install event comes back for every product, known or not.",
         "A crash, a hang, an exit or an exception is told with the call that it happened in.",
         {"interface.adds-reference"},
         &preInstallReturns},
        {"dispatch.post-install",
         "The post-install event comes back for every product and language, known or not.",
         "A crash, a hang, an exit or an exception is told with the call that it happened in.",
         {"interface.adds-reference"},
         &postInstallReturns},
        {"dispatch.pre-install-alone", "Message 2 runs the pre-install step only.",
         "The products' files are not there yet: the Finder's flags and the language come later.", events,
         &preInstallRunsAlone},
        {"dispatch.post-install-alone", "Message 3 runs the post-install step only.",
         "The version is noted before the installation.", events, &postInstallRunsAlone},
        {"dispatch.other-messages", "Any other message has no effect and sets no error bit.",
         "The installer sends more messages than the two; they are none of the plug-in's business.", events,
         &otherMessagesDoNothing},
        {"dispatch.wrong-selector", "A selector other than 1000 sets bit 0 of the error flags.",
         "The selector is compared as 16 bits.", events, &wrongSelectorSetsBit},
        {"dispatch.wrong-selector-silent", "The main entry shows no alert for a wrong selector.",
         "Only the steps, when they are called directly, talk to the user.", events, &wrongSelectorIsSilent},
        {"dispatch.wrong-selector-idle", "A wrong selector has no effect on the volume.",
         "Neither step runs.", events, &wrongSelectorDoesNothing},
        {"dispatch.order", "The events may come in the wrong order.",
         "The two steps write to different places, so that their order does not matter.", events,
         &orderDoesNotMatter},
        {"dispatch.twice", "Each event may come twice in a row.", "A step stores values; it does not add up.",
         events, &eachEventTwiceIsTheSame},
        {"dispatch.second-run",
         "A second installation of the same product changes nothing.",
         "Installing again is what users do when something looks wrong.",
         {"dispatch.order", "pre-install.nothing-else", "post-install.nothing-else"},
         &secondRunChangesNothing},
        {"dispatch.two-instances",
         "Two instances may be in use at once.",
         "Releasing one must not take anything from the other.",
         {"dispatch.pre-install", "dispatch.post-install", "factory.two-instances", "references.zero"},
         &twoInstancesWork},
    };
}

} // namespace xcodhost
