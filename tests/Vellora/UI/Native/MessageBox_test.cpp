#include <Vellora/UI/Native/MessageBox.h>

#include <gtest/gtest.h>
#include <macplatform/Alerts.h>
#include <macplatform/LiveObjects.h>
#include <string>
#include <utility>
#include <vector>

static bool gDialogsAllowed = true;

// Replaces the library's definition.
bool Util::IsModalDialogAllowed() { return gDialogsAllowed; }

namespace {

using namespace UI::Native;
using Texts = std::vector<std::string>;

struct MessageBox : testing::Test {
    MessageBox() {
        macplatform::SetAlertResponder([this](const macplatform::Alert& alert) {
            shown.push_back(alert);
            return chosenButton;
        });
    }
    ~MessageBox() override {
        macplatform::SetAlertResponder({});
        gDialogsAllowed = true;
        EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore);
    }
    int chosenButton = 0;
    std::vector<macplatform::Alert> shown;
    std::size_t liveBefore = macplatform::LiveObjectCount();
};

/// A kind of message box.
struct Kind {
    explicit Kind(bool (*show)(bool& cancelled)) : ask(show) {}
    Kind& Buttons(Texts titles) {
        buttons = std::move(titles);
        return *this;
    }
    /// Sets the result for each button, and last for a box that cannot be shown.
    Kind& Results(std::vector<bool> values) {
        results = std::move(values);
        return *this;
    }
    /// Sets the value of the flag for each button, and last for a box that cannot be shown. Without this call
    /// the flag must not change.
    Kind& Cancelled(std::vector<bool> values) {
        cancelled = std::move(values);
        return *this;
    }

    bool (*ask)(bool& cancelled);
    Texts buttons;
    std::vector<bool> results;
    std::vector<bool> cancelled;
};

const std::vector<Kind> kKinds = {
    Kind([](bool&) { return MessageOKCancel(nullptr, "T", "M", OKCancelFocus::kSecondButton, false); })
        .Buttons({"OK", "Cancel"})
        .Results({true, false, false}),
    Kind([](bool&) { return MessageYesNo(nullptr, "T", "M", YesNoFocus::kFirstButton, true); })
        .Buttons({"Yes", "No"})
        .Results({true, false, false}),
    Kind([](bool& flag) {
        return MessageYesNoCancel(flag, nullptr, "T", "M", YesNoCancelFocus::kThirdButton, false);
    })
        .Buttons({"Yes", "Cancel", "No"})
        .Results({true, false, false, false})
        .Cancelled({false, true, false, true}),
    Kind([](bool&) { return MessageRetryCancel(nullptr, "T", "M", RetryCancelFocus::kFirstButton, false); })
        .Buttons({"OK", "Cancel", "Retry", "Cancel"})
        .Results({true, false, false, false, false}),
};

TEST_F(MessageBox, ReturnsTheResultOfTheChosenButton) {
    for (const Kind& kind : kKinds) {
        for (std::size_t i = 0; i < 2 * kind.results.size(); ++i) {
            const std::size_t button = i / 2;
            const bool flagBefore = i % 2 != 0;
            SCOPED_TRACE(testing::PrintToString(kind.buttons) + ", button " + std::to_string(button));
            chosenButton = button < kind.buttons.size() ? static_cast<int>(button) : -1;
            bool cancelled = flagBefore;
            EXPECT_EQ(kind.ask(cancelled), kind.results[button]);
            EXPECT_EQ(cancelled, kind.cancelled.empty() ? flagBefore : kind.cancelled[button]);
            EXPECT_EQ(shown.back().buttons, kind.buttons);
            EXPECT_EQ(shown.back().message, "M");
        }
    }
}

TEST_F(MessageBox, ShowsNothingIfDialogsAreForbidden) {
    gDialogsAllowed = false;
    for (const Kind& kind : kKinds) {
        for (bool cancelled : {false, true}) {
            const bool flagBefore = cancelled;
            EXPECT_FALSE(kind.ask(cancelled));
            EXPECT_EQ(cancelled, flagBefore);
        }
    }
    MessageOK(nullptr, "T", "M", false);
    MessageOK(nullptr, {'a'}, {'b'}, {'c'}, false);
    EXPECT_TRUE(shown.empty());
}

TEST_F(MessageBox, OKShowsTheMessageAndTheDefaultButton) {
    MessageOK(nullptr, "T", "Caf\xC3\xA9", false);
    MessageOK(nullptr, "T", String(), false);
    MessageOK(nullptr, "T", "not \xE9 UTF-8", false);
    MessageOK(nullptr, {}, {'s', 0xD834, 0xDD1E}, {'t'}, false);
    MessageOK(nullptr, {'f'}, {}, {'t'}, false);
    MessageOK(nullptr, {'f'}, {'s'}, {}, false);
    Texts messages;
    for (const auto& alert : shown) {
        messages.push_back(alert.message);
        EXPECT_EQ(alert.buttons, Texts{"OK"});
    }
    EXPECT_EQ(messages, (Texts{"Caf\xC3\xA9", "", "", "s\xF0\x9D\x84\x9E"}));
}

} // namespace
