// Asks before a file is replaced. The program supplies the answers, as a test does.
#include <Vellora/UI/Native/MessageBox.h>

#include <macplatform/Alerts.h>

#include <cstdio>

static const char* askToKeep(const String& name) {
    bool cancelled = false;
    const String question = String("Replace \"%1\"?").Arg(name);
    if (UI::Native::MessageYesNoCancel(cancelled, nullptr, "Export", question,
                                       UI::Native::YesNoCancelFocus::kFirstButton, false))
        return "replaced";
    return cancelled ? "stopped" : "kept";
}

int main() {
    // On Linux this function returns the index of a button. Any other number means "not shown".
    int answer = 0;
    macplatform::SetAlertResponder([&answer](const macplatform::Alert& alert) {
        std::printf("%s", alert.message.c_str());
        for (const std::string& button : alert.buttons) std::printf(" [%s]", button.c_str());
        return answer;
    });
    for (answer = 0; answer < 4; ++answer) std::printf(" -> %s\n", askToKeep("Warm.fxp"));
}
