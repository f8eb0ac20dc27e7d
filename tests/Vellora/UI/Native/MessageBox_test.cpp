#include <Vellora/UI/Native/MessageBox.h>

#include <gtest/gtest.h>
#include <macplatform/Alerts.h>
#include <macplatform/LiveObjects.h>
#include <string>
#include <vector>

static bool gDialogsAllowed = true;

// In the place of the library's.
bool Util::IsModalDialogAllowed() { return gDialogsAllowed; }

namespace {

using namespace UI::Native;
using Texts = std::vector<std::string>;

struct MessageBox : testing::Test {
    MessageBox() {
        macplatform::SetAlertResponder([this](const macplatform::Alert& alert) {
            shown.push_back(alert);
            return answer;
        });
    }
    ~MessageBox() override {
        macplatform::SetAlertResponder({});
        gDialogsAllowed = true;
        EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore);
    }
    int answer = 0;
    std::vector<macplatform::Alert> shown;
    std::size_t liveBefore = macplatform::LiveObjectCount();
};

struct Kind {
    bool (*ask)(bool& cancelled);
    Texts buttons;
    std::vector<bool> results; ///< For each button from the first, and at last where nothing could be shown.
    std::vector<bool> cancelled; ///< Empty: the flag is left alone.
};

const std::vector<Kind> kKinds = {
    {[](bool&) { return MessageOKCancel(nullptr, "T", "M", OKCancelFocus::kSecondButton, false); },
     {"OK", "Cancel"},
     {true, false, false},
     {}},
    {[](bool&) { return MessageYesNo(nullptr, "T", "M", YesNoFocus::kFirstButton, true); },
     {"Yes", "No"},
     {true, false, false},
     {}},
    {[](bool& flag) {
         return MessageYesNoCancel(flag, nullptr, "T", "M", YesNoCancelFocus::kThirdButton, false);
     },
     {"Yes", "Cancel", "No"},
     {true, false, false, false},
     {false, true, false, true}},
    {[](bool&) { return MessageRetryCancel(nullptr, "T", "M", RetryCancelFocus::kFirstButton, false); },
     {"OK", "Cancel", "Retry", "Cancel"},
     {true, false, false, false, false},
     {}},
};

TEST_F(MessageBox, ReturnsTheChosenButton) {
    for (const Kind& kind : kKinds) {
        for (std::size_t i = 0; i < 2 * kind.results.size(); ++i) {
            const std::size_t button = i / 2;
            const bool flagBefore = i % 2 != 0;
            SCOPED_TRACE(testing::PrintToString(kind.buttons) + ", button " + std::to_string(button));
            answer = button < kind.buttons.size() ? static_cast<int>(button) : -1;
            bool cancelled = flagBefore;
            EXPECT_EQ(kind.ask(cancelled), kind.results[button]);
            EXPECT_EQ(cancelled, kind.cancelled.empty() ? flagBefore : kind.cancelled[button]);
            EXPECT_EQ(shown.back().buttons, kind.buttons);
            EXPECT_EQ(shown.back().message, "M");
        }
    }
}

TEST_F(MessageBox, ShowsNothingWhereNoDialogIsAllowed) {
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

TEST_F(MessageBox, OKShowsTheMessageWithThePlatformsOwnButton) {
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
