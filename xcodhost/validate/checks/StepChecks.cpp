#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

namespace xcodhost {

namespace {

constexpr std::uint16_t kWrongSelectors[] = {0, 7, 999, 1001, 0xFFFF};
constexpr std::uint16_t kSteps[] = {kPreInstall, kPostInstall};

ParameterBlock refused(std::uint16_t step, std::uint16_t selector = 7) { return {selector, step, 4900, 0}; }

void nullBlockDoesNothing(CheckRun& run) {
    for (const std::uint16_t step : kSteps) {
        const Outcome outcome = run.DeliverNothing(step);
        run.ExpectNoEffect(outcome);
        run.Expect(outcome.alerts.empty(), "no alert", Describe(outcome.alerts));
    }
}

void stepsReturn(CheckRun& run) {
    for (const std::uint16_t step : kSteps) {
        run.Deliver(Event(step, 4900), Entry::kStep);
        run.Deliver(refused(step), Entry::kStep);
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
            run.Expect(seen == wanted, "as through the main entry: " + wanted, seen);
        }
    }
}

template <typename Inspect>
void forEachRefusal(CheckRun& run, Inspect inspect) {
    for (const std::uint16_t step : kSteps) {
        for (const std::uint16_t selector : kWrongSelectors) {
            inspect(run.Deliver(refused(step, selector), Entry::kStep));
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
            run.Expect(alert.buttons.size() <= 1, "no button beside the alert's own",
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
        run.Expect(outcome.alerts.size() <= 2, "one alert and one stop alert at most",
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
            ParameterBlock block = refused(step);
            block.SetErrorFlags(given);
            const std::uint32_t after = run.Deliver(block, Entry::kStep).flagsAfter;
            run.Expect((after & ~1U) == given, "the other bits of " + Hex(given, 8) + " stay", Hex(after, 8));
        }
    }
}

void refusalDoesNothingElse(CheckRun& run) {
    forEachRefusal(run, [&](const Outcome& outcome) { run.ExpectNoEffect(outcome); });
}

void chosenButtonDoesNotMatter(CheckRun& run) {
    for (const std::uint16_t step : kSteps) {
        for (const int button : {-1, 0, 1, 7}) {
            run.Answer(button);
            const Outcome outcome = run.Deliver(refused(step), Entry::kStep);
            run.Expect((outcome.flagsAfter & 1) != 0 && outcome.alerts.size() == 2,
                       "both alerts and the error bit, whatever is answered",
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

std::vector<Check> StepChecks() {
    const std::vector<const char*> direct = {"steps.return"};
    return {
        {"steps.null-block",
         "The exported steps do nothing with a null block.",
         "Unlike the main entry, they may be called without one.",
         {"bundle.loads"},
         &nullBlockDoesNothing},
        {"steps.return",
         "The exported steps come back, from events and from refused calls.",
         "A crash, a hang, an exit or an exception is told with the call that it happened in.",
         {"bundle.loads", "dispatch.pre-install", "dispatch.post-install"},
         &stepsReturn},
        {"steps.same-effects",
         "The exported steps do what the main entry does for their event.",
         "A host may call either.",
         {"steps.return", "dispatch.pre-install-alone", "dispatch.post-install-alone"},
         &stepsDoAsMainEntry},
        {"steps.alert", "A step that is called with a wrong selector shows the alert first.",
         "\"Unable to set post install option keys.\", the same text for both steps.", direct,
         &refusalShowsAlert},
        {"steps.alert-buttons", "The alert has the platform's own single button.",
         "There is nothing to choose.", direct, &alertHasOneButton},
        {"steps.stop-alert", "Stop alert 5000 follows the alert.",
         "Its text lies in a resource of the installer.", direct, &stopAlertFollows},
        {"steps.alerts-once", "A refused call shows no more than the two alerts.", "Each is shown once.",
         direct, &nothingElseIsShown},
        {"steps.error-bit", "A step that is called with a wrong selector sets bit 0 of the error flags.",
         "The installer learns of the failure by this bit alone.", direct, &refusalSetsBit},
        {"steps.other-bits", "A refused call of a step leaves the other error bits alone.",
         "They are the host's and other plug-ins'.", direct, &refusalKeepsOtherBits},
        {"steps.refused-idle", "A refused call of a step has no effect on the volume.",
         "No preference is stored, no flag set.", direct, &refusalDoesNothingElse},
        {"steps.answer",
         "It makes no difference how the alerts are answered, or whether they could be shown.",
         "An alert may be dismissed, or the machine may have no screen.",
         {"steps.alert", "steps.stop-alert", "steps.alerts-once", "steps.error-bit"},
         &chosenButtonDoesNotMatter},
        {"steps.silent", "A step that is carried out shows no alert.",
         "An unknown product is no error either.", direct, &acceptedCallIsSilent},
    };
}

} // namespace xcodhost
