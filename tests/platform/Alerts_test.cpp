#include <Carbon/Carbon.h>
#include <macplatform/Alerts.h>
#include <macplatform/Journal.h>
#include <macplatform/LiveObjects.h>
#include <objc/message.h>
#include <objc/runtime.h>

#include <gtest/gtest.h>

namespace {

template <typename Result = id, typename... Arguments>
Result Send(id receiver, const char* message, Arguments... arguments) {
    const auto send = reinterpret_cast<Result (*)(id, SEL, Arguments...)>(&objc_msgSend);
    return send(receiver, sel_registerName(message), arguments...);
}

/// Shows an alert with these buttons; the number that runModal answers.
int Show(const std::vector<CFStringRef>& buttons) {
    const id alert = Send(Send(objc_getClass("NSAlert"), "alloc"), "init");
    Send(alert, "setMessageText:", CFSTR("Really?"));
    for (const CFStringRef button : buttons) Send(alert, "addButtonWithTitle:", button);
    const int number = Send<int>(alert, "runModal");
    Send(alert, "release");
    return number;
}

class Alerts : public testing::Test {
protected:
    std::size_t liveBefore = macplatform::LiveObjectCount();
    void TearDown() override {
        macplatform::SetAlertPresenter({});
        macplatform::SetJournalObserver({});
        EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore);
    }
};

} // namespace

TEST_F(Alerts, NumberTheButtonsInTheirOrder) {
    const std::vector<CFStringRef> buttons = {CFSTR("Yes"), CFSTR("Cancel"), CFSTR("No")};
    std::vector<macplatform::Alert> shown;
    for (int choice = 0; choice < 3; ++choice) {
        macplatform::SetAlertPresenter([&shown, choice](const macplatform::Alert& alert) {
            shown.push_back(alert);
            return choice;
        });
        EXPECT_EQ(Show(buttons), 1000 + choice);
    }
    EXPECT_EQ(shown.at(0).message, "Really?");
    EXPECT_EQ(shown.at(0).buttons, (std::vector<std::string>{"Yes", "Cancel", "No"}));
    EXPECT_EQ(Show({}), -1001) << "the third button of an alert that has one";
    EXPECT_EQ(shown.back().buttons, std::vector<std::string>{"OK"}) << "the platform's own";
    macplatform::SetAlertPresenter({});
    EXPECT_EQ(Show(buttons), 1000) << "nobody to ask: the first";
}

TEST_F(Alerts, StopAlertIsNotShownUnlessSomebodyShowsIt) {
    EXPECT_EQ(StopAlert(5000, nullptr), -1);
    int resource = 0;
    macplatform::SetAlertPresenter([&](const macplatform::Alert& alert) {
        resource = alert.kind == macplatform::Alert::Kind::Stop ? alert.resource : -1;
        return 0;
    });
    EXPECT_EQ(StopAlert(5000, nullptr), 1);
    EXPECT_EQ(resource, 5000);
}

TEST_F(Alerts, AreToldAndCounted) {
    std::vector<std::string> told;
    macplatform::SetJournalObserver([&told](const macplatform::JournalEntry& entry) {
        if (entry.call != "objc_msgSend") return;
        std::string line;
        for (const auto& argument : entry.arguments) line += argument + ' ';
        told.push_back(line + entry.result);
    });
    const id alert = Send(Send(objc_getClass("NSAlert"), "alloc"), "init");
    EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore + 1);
    Send(alert, "setMessageText:", CFSTR("a\nb"));
    Send(alert, "setIcon:", CFSTR("x"));
    Send(nullptr, "release");
    Send(alert, "retain");
    Send(alert, "release");
    Send(alert, "release");
    EXPECT_EQ(told, (std::vector<std::string>{
                        "NSAlert alloc NSAlert", "NSAlert init NSAlert",
                        "NSAlert setMessageText: \"a\\nb\" 0", "NSAlert setIcon: \"x\" 0", "nil release nil",
                        "NSAlert retain NSAlert", "NSAlert release 0", "NSAlert release 0"}));
    EXPECT_EQ(objc_getClass("NSWindow"), nullptr);
    EXPECT_EQ(sel_registerName("runModal"), sel_registerName("runModal"));
}
