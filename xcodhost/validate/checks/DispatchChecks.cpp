#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

#include <algorithm>

namespace xcodhost {

namespace {

/// Delivers the message for every known and unknown product. Other checks examine the effects.
void deliverAll(CheckRun& run, std::uint16_t message) {
    run.WatchVolume(false);
    for (const ProductContract& product : kProducts) run.Deliver(Event(message, product.code));
    for (const std::int32_t product : kUnknownProducts) run.Deliver(Event(message, product));
}
bool isVersionKey(const PreferenceChange& change) { return change.key.rfind("InstalledProducts/", 0) == 0; }
bool isPostInstallKey(const PreferenceChange& change) {
    return change.key == kIntervalKey || change.key == kLanguageKey;
}

constexpr std::uint16_t kOtherMessages[] = {0,      1,      4,      5,    6,      0x0102,
                                            0x0103, 0x0202, 0x0300, 1000, 0x8002, 0xFFFF};

void otherMessagesDoNothing(CheckRun& run) {
    for (const std::uint16_t message : kOtherMessages) {
        const Outcome outcome = run.Deliver(Event(message, 4900));
        run.ExpectNoEffect(outcome);
        run.Expect(outcome.flagsAfter == 0, "unchanged error flags", Hex(outcome.flagsAfter, 8));
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
        run.Expect(outcome.alerts.empty(), "no alert from the main entry", Describe(outcome.alerts));
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

/// Returns the state without inodes and times, which always differ between two volumes.
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
    expectSameVolume(run, right, wrong, "the same volume after post-install and then pre-install");
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
        run.Expect(before.Count() == 0, "no change by a second pre-install", Describe(before));
        run.Expect(after.Count() == 0, "no change by a second post-install", Describe(after));
    }
}

void eachEventTwiceIsTheSame(CheckRun& run) {
    const VolumeState once = afterEvents(run, {kPreInstall, kPostInstall});
    const VolumeState twice = afterEvents(run, {kPreInstall, kPreInstall, kPostInstall, kPostInstall});
    expectSameVolume(run, once, twice, "the same volume after each event arrived twice");
}

void twoInstancesWork(CheckRun& run) {
    const VolumeState one = afterEvents(run, {kPreInstall, kPostInstall});
    run.UseFreshVolume();
    FunctionBlock** const other = run.Bundle().MakeInstance();
    run.Deliver(Event(kPreInstall, 4900, 11));
    run.ReleaseInterface();
    const ULONG count =
        run.Bundle().RunCode({"AddRef", "the other instance", {}}, [&] { return (*other)->AddRef(other); });
    run.Expect(count == 2, "the other instance still has 1 reference", std::to_string(count - 1));
    run.Deliver(Event(kPostInstall, 4900, 11)); // through a third instance
    expectSameVolume(run, one, run.CurrentVolume(), "the same volume after events through two instances");
}

} // namespace

void PreInstallReturns(CheckRun& run) { deliverAll(run, kPreInstall); }

void PostInstallReturns(CheckRun& run) {
    deliverAll(run, kPostInstall);
    for (const LanguageContract& language : kLanguages) {
        run.Deliver(Event(kPostInstall, 4900, language.code));
    }
    for (const std::int32_t language : kOtherLanguages) run.Deliver(Event(kPostInstall, 4900, language));
}

void PreInstallRunsAlone(CheckRun& run) {
    const Changes changes = run.Deliver(Event(kPreInstall, 4900)).changes;
    const bool isAlone =
        std::none_of(changes.preferences.begin(), changes.preferences.end(), &isPostInstallKey) &&
        changes.finderFlags.empty();
    run.Expect(isAlone, "message 2 has only the effects of the pre-install step", Describe(changes));
}

void PostInstallRunsAlone(CheckRun& run) {
    const Changes changes = run.Deliver(Event(kPostInstall, 4900)).changes;
    run.Expect(std::none_of(changes.preferences.begin(), changes.preferences.end(), &isVersionKey),
               "message 3 has only the effects of the post-install step", Describe(changes));
}

const std::vector<Check::Body> kNeedsEvents = {&PreInstallReturns, &PostInstallReturns};

const CheckGroup kDispatchChecks = {
    "dispatch",
    {
        Check("pre-install", &PreInstallReturns, {&InterfaceAddsReference})
            .Claim("The pre-install event returns for every known and unknown product.")
            .Reason("The report names the call that crashes, hangs, exits or throws."),
        Check("post-install", &PostInstallReturns, {&InterfaceAddsReference})
            .Claim("The post-install event returns for every known and unknown product and language.")
            .Reason("The report names the call that crashes, hangs, exits or throws."),
        Check("pre-install-alone", &PreInstallRunsAlone, kNeedsEvents)
            .Claim("Message 2 runs only the pre-install step.")
            .Reason("The product's files are not installed yet. The post-install step sets the Finder flags "
                    "and the language."),
        Check("post-install-alone", &PostInstallRunsAlone, kNeedsEvents)
            .Claim("Message 3 runs only the post-install step.")
            .Reason("The pre-install step stores the version before the installation."),
        Check("other-messages", &otherMessagesDoNothing, kNeedsEvents)
            .Claim("Any other message has no effect and sets no error bit.")
            .Reason("The installer also sends messages that a plug-in must ignore."),
        Check("wrong-selector", &wrongSelectorSetsBit, kNeedsEvents)
            .Claim("A selector other than 1000 sets bit 0 of the error flags.")
            .Reason("The plug-in must compare all 16 bits of the selector."),
        Check("wrong-selector-silent", &wrongSelectorIsSilent, kNeedsEvents)
            .Claim("The main entry shows no alert for a wrong selector.")
            .Reason("Only the exported steps show alerts, when a host calls them directly."),
        Check("wrong-selector-idle", &wrongSelectorDoesNothing, kNeedsEvents)
            .Claim("A wrong selector has no effect on the volume.")
            .Reason("Neither step runs."),
        Check("order", &orderDoesNotMatter, kNeedsEvents)
            .Claim("The order of the two events does not change the result.")
            .Reason("The two steps write different items."),
        Check("twice", &eachEventTwiceIsTheSame, kNeedsEvents)
            .Claim("An event that arrives twice in a row has the same effect as one event.")
            .Reason("A step stores fixed values and does not add to stored values."),
        Check("second-run", &secondRunChangesNothing,
              {&orderDoesNotMatter, &PreInstallChangesNothingElse, &PostInstallChangesNothingElse})
            .Claim("A second installation of the same product changes nothing.")
            .Reason("Users install a product again when something looks wrong."),
        Check("two-instances", &twoInstancesWork,
              {&PreInstallReturns, &PostInstallReturns, &InstancesAreTheirOwn, &LastReleaseReturnsZero})
            .Claim("Two instances can be in use at the same time.")
            .Reason("The release of one instance must not affect the other."),
    }};

} // namespace xcodhost
