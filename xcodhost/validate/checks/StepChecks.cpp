#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

namespace xcodhost {

namespace {

constexpr std::uint16_t kWrongSelectors[] = {0, 7, 999, 1001, 0xFFFF};
constexpr std::uint16_t kSteps[] = {kPreInstall, kPostInstall};

ParameterBlock rejectedBlock(std::uint16_t step, std::uint16_t selector = 7) {
    return {selector, step, 4900, 0};
}

void nullBlockDoesNothing(CheckRun& run) {
    for (const std::uint16_t step : kSteps) {
        const Outcome outcome = run.DeliverNullBlock(step);
        run.ExpectNoEffect(outcome);
        run.Expect(outcome.alerts.empty(), "no alert", Describe(outcome.alerts));
    }
}

void stepsReturn(CheckRun& run) {
    for (const std::uint16_t step : kSteps) {
        run.Deliver(Event(step, 4900), Entry::kStep);
        run.Deliver(rejectedBlock(step), Entry::kStep);
    }
}

void stepsDoAsMainEntry(CheckRun& run) {
    for (const std::uint16_t step : kSteps) {
        for (const ProductContract& product : kProducts) {
            run.UseFreshVolume();
            const std::string wanted = Describe(run.Deliver(Event(step, product.code, 2)).changes);
            run.UseFreshVolume();
            const std::string seen =
                Describe(run.Deliver(Event(step, product.code, 2), Entry::kStep).changes);
            run.Expect(seen == wanted, "the same effects as the main entry: " + wanted, seen);
        }
    }
}

template <typename Inspect>
void forEachRefusal(CheckRun& run, Inspect inspect) {
    for (const std::uint16_t step : kSteps) {
        for (const std::uint16_t selector : kWrongSelectors) {
            inspect(run.Deliver(rejectedBlock(step, selector), Entry::kStep));
        }
    }
}

void refusalShowsAlert(CheckRun& run) {
    forEachRefusal(run, [&](const Outcome& outcome) {
        const std::string wanted = std::string("Alert \"") + kFailureMessage + '"';
        const bool isShown = !outcome.alerts.empty() && outcome.alerts.front().message == kFailureMessage;
        run.Expect(isShown, "first " + wanted, Describe(outcome.alerts));
    });
}

void alertHasOneButton(CheckRun& run) {
    forEachRefusal(run, [&](const Outcome& outcome) {
        for (const macplatform::Alert& alert : outcome.alerts) {
            run.Expect(alert.buttons.size() <= 1, "no button except the default button",
                       Counted(alert.buttons.size(), "button"));
        }
    });
}

void stopAlertFollows(CheckRun& run) {
    forEachRefusal(run, [&](const Outcome& outcome) {
        const bool isLast = !outcome.alerts.empty() &&
                            outcome.alerts.back().kind == macplatform::Alert::Kind::kStop &&
                            outcome.alerts.back().resource == kFailureStopAlert;
        run.Expect(isLast, "stop alert 5000 after the alert", Describe(outcome.alerts));
    });
}

void nothingElseIsShown(CheckRun& run) {
    forEachRefusal(run, [&](const Outcome& outcome) {
        run.Expect(outcome.alerts.size() <= 2, "at most one alert and one stop alert",
                   Describe(outcome.alerts));
    });
}

void refusalSetsBit(CheckRun& run) {
    forEachRefusal(run, [&](const Outcome& outcome) {
        run.Expect((outcome.flagsAfter & 1) != 0, "bit 0 of the error flags is set",
                   Hex(outcome.flagsAfter, 8));
    });
}

void refusalKeepsOtherBits(CheckRun& run) {
    for (const std::uint16_t step : kSteps) {
        for (const std::uint32_t given : {0xFFFFFFFEU, 0x80000000U, 0x00010002U}) {
            ParameterBlock block = rejectedBlock(step);
            block.SetErrorFlags(given);
            const std::uint32_t after = run.Deliver(block, Entry::kStep).flagsAfter;
            run.Expect((after & ~1U) == given, "the other bits of " + Hex(given, 8) + " are kept",
                       Hex(after, 8));
        }
    }
}

void rejectionHasNoOtherEffect(CheckRun& run) {
    forEachRefusal(run, [&](const Outcome& outcome) { run.ExpectNoEffect(outcome); });
}

void chosenButtonDoesNotMatter(CheckRun& run) {
    for (const std::uint16_t step : kSteps) {
        for (const int button : {-1, 0, 1, 7}) {
            run.SetChosenButton(button);
            const Outcome outcome = run.Deliver(rejectedBlock(step), Entry::kStep);
            run.Expect((outcome.flagsAfter & 1) != 0 && outcome.alerts.size() == 2,
                       "both alerts and the error bit for any answer",
                       Describe(outcome.alerts) + ", error flags " + Hex(outcome.flagsAfter, 8));
        }
    }
}

void acceptedCallIsSilent(CheckRun& run) {
    for (const std::uint16_t step : kSteps) {
        std::vector<std::int32_t> products(kUnknownProducts.begin(), kUnknownProducts.end());
        for (const ProductContract& product : kProducts) products.push_back(product.code);
        for (const std::int32_t product : products) {
            const Outcome outcome = run.Deliver(Event(step, product), Entry::kStep);
            run.Expect(outcome.alerts.empty(), "no alert", Describe(outcome.alerts));
        }
    }
}

} // namespace

const std::vector<Check::Body> kNeedsSteps = {&stepsReturn};

const CheckGroup kStepsChecks = {
    "steps",
    {
        Check("null-block", &nullBlockDoesNothing, {&CodeLoads})
            .Claim("The exported steps do nothing for a null block.")
            .Reason("A host may call the exported steps without a block. The main entry always receives a "
                    "block."),
        Check("return", &stepsReturn, {&CodeLoads, &PreInstallReturns, &PostInstallReturns})
            .Claim("The exported steps return from events and from rejected calls.")
            .Reason("The report names the call that crashes, hangs, exits or throws."),
        Check("same-effects", &stepsDoAsMainEntry,
              {&stepsReturn, &PreInstallRunsAlone, &PostInstallRunsAlone})
            .Claim("The exported steps have the same effects as the main entry.")
            .Reason("A host may call the main entry or the exported steps."),
        Check("alert", &refusalShowsAlert, kNeedsSteps)
            .Claim("A step that gets a wrong selector first shows the failure alert.")
            .Reason("Both steps show the same text, \"Unable to set post install option keys.\""),
        Check("alert-buttons", &alertHasOneButton, kNeedsSteps)
            .Claim("The alert has only the platform's default button.")
            .Reason("The user has no choice to make."),
        Check("stop-alert", &stopAlertFollows, kNeedsSteps)
            .Claim("Stop alert 5000 follows the alert.")
            .Reason("The text of the stop alert is in a resource of the installer."),
        Check("alerts-once", &nothingElseIsShown, kNeedsSteps)
            .Claim("A rejected call shows at most one alert and one stop alert.")
            .Reason("The step shows each of the two once."),
        Check("error-bit", &refusalSetsBit, kNeedsSteps)
            .Claim("A step that gets a wrong selector sets bit 0 of the error flags.")
            .Reason("This bit is the only way to report the failure to the installer."),
        Check("other-bits", &refusalKeepsOtherBits, kNeedsSteps)
            .Claim("A rejected call of a step does not change the other error bits.")
            .Reason("The other bits belong to the host and to other plug-ins."),
        Check("refused-idle", &rejectionHasNoOtherEffect, kNeedsSteps)
            .Claim("A rejected call of a step has no effect on the volume.")
            .Reason("The step stores no preference and sets no Finder flag."),
        Check("answer", &chosenButtonDoesNotMatter,
              {&refusalShowsAlert, &stopAlertFollows, &nothingElseIsShown, &refusalSetsBit})
            .Claim("The answers to the alerts do not change the result of a rejected call.")
            .Reason("The user may dismiss an alert. On a machine without a screen no alert is shown."),
        Check("silent", &acceptedCallIsSilent, kNeedsSteps)
            .Claim("A step that gets the right selector shows no alert.")
            .Reason("An unknown product is not an error."),
    }};

} // namespace xcodhost
