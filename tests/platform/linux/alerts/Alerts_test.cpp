#include <Carbon/Carbon.h>
#include <macplatform/Alerts.h>
#include <macplatform/LiveObjects.h>

#include "support/SendMessage.h"

#include <gmock/gmock.h>

namespace {

/// Shows an alert with these buttons and returns the result of runModal.
int show(const std::vector<CFStringRef>& buttons) {
    const id alert = NewAlert();
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
        macplatform::SetAlertResponder({});
        EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore);
    }
};

} // namespace

TEST_F(Alerts, RunModalReturnsTheNumberOfTheButton) {
    const std::vector<CFStringRef> buttons = {CFSTR("Yes"), CFSTR("Cancel"), CFSTR("No")};
    std::vector<macplatform::Alert> shown;
    for (int choice = 0; choice < 3; ++choice) {
        macplatform::SetAlertResponder([&shown, choice](const macplatform::Alert& alert) {
            shown.push_back(alert);
            return choice;
        });
        EXPECT_EQ(show(buttons), 1000 + choice);
    }
    EXPECT_EQ(shown.at(0).message, "Really?");
    EXPECT_EQ(shown.at(0).buttons, (std::vector<std::string>{"Yes", "Cancel", "No"}));
    EXPECT_EQ(show({CFSTR("Yes"), CFSTR("No")}), -1001) << "the responder chooses the third button";
    EXPECT_EQ(show({}), -1001) << "the responder chooses the third button, but the alert has one";
    EXPECT_EQ(shown.back().buttons, std::vector<std::string>{"OK"}) << "the default button";
    macplatform::SetAlertResponder({});
    EXPECT_EQ(show(buttons), 1000) << "without a responder, the first button";
}

TEST_F(Alerts, StopAlertNeedsAResponder) {
    EXPECT_EQ(StopAlert(5000, nullptr), -1);
    int resource = 0;
    macplatform::SetAlertResponder([&](const macplatform::Alert& alert) {
        resource = alert.kind == macplatform::Alert::Kind::kStop ? alert.resource : -1;
        return 0;
    });
    EXPECT_EQ(StopAlert(5000, nullptr), 1);
    EXPECT_EQ(resource, 5000);
}

TEST_F(Alerts, AreCounted) {
    const id alert = NewAlert();
    EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore + 1);
    EXPECT_EQ(macplatform::DescribeLiveObjects().back(), "NSAlert \"\"");
    Send(alert, "retain");
    Send(alert, "release");
    Send(alert, "release");
    EXPECT_EQ(sel_registerName("runModal"), sel_registerName("runModal"));
}
