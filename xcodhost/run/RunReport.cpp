#include "RunReport.h"

#include "DisplayText.h"
#include "alert/AlertResponder.h"

namespace xcodhost {

namespace {

std::string volumeText(const RunResult& result) {
    if (result.volume.empty()) return "a scratch sample volume, removed afterwards";
    return (result.isDryRun ? "a scratch copy, removed afterwards, of " : "") + Printable(result.volume);
}

std::string alertLine(const AlertRecord& record) {
    std::string buttons;
    for (const std::string& title : record.alert.buttons) buttons += " [" + Printable(title) + ']';
    const std::string choice = record.button < 0
                                   ? "not shown" + (record.note.empty() ? "" : ", " + record.note)
                                   : Printable(record.Title());
    return "  " + Describe(record.alert) + buttons + ": " + choice + '\n';
}

std::string callLine(const macplatform::RecordedCall& entry) {
    std::string text = "  " + entry.call;
    const bool isWholeMessage = !entry.call.empty() && entry.call.front() == '[';
    if (!isWholeMessage || !entry.arguments.empty()) text += '(' + Join(entry.arguments, ", ") + ')';
    if (!entry.result.empty()) text += " = " + entry.result;
    if (!entry.note.empty()) text += "  (" + entry.note + ')';
    return Printable(text) + '\n';
}

std::string returnLine(const CallReturned& returned) {
    if (!returned.block)
        return returned.result.empty() ? "" : "  returned " + Printable(returned.result) + '\n';
    const BlockEffect& block = *returned.block;
    const std::string before = Hex(block.errorFlagsBefore, 8);
    std::string text = block.errorFlagsBefore == block.errorFlagsAfter
                           ? "  errorFlags " + before + " (unchanged)\n"
                           : "  errorFlags " + before + " -> " + Hex(block.errorFlagsAfter, 8) + '\n';
    if (!block.otherBytes.empty()) {
        text += "  warning: other bytes of the parameter block changed: " + block.otherBytes + '\n';
    }
    return text;
}

/// Returns whether the report shows the call. Without `--trace` the report omits a call that delivers no
/// event, unless the call showed an alert or did not return.
bool isShown(const CallRecord& call, bool hasTrace) {
    return hasTrace || !call.call.event.empty() || !call.alerts.empty() || !call.returned;
}

std::string callText(const CallRecord& call, const Style& style) {
    std::string text = style.Heading(call.Describe()) + '\n';
    for (const auto& entry : call.platformCalls) text += callLine(entry);
    for (const AlertRecord& alert : call.alerts) text += alertLine(alert);
    return text + (call.returned ? returnLine(*call.returned) : "  did not return\n");
}

std::string effectsText(const RunResult& result) {
    std::string text;
    for (const PreferenceChange& change : result.changes.preferences) text += Line(change) + '\n';
    for (const FinderFlagChange& change : result.changes.finderFlags) text += Line(change) + '\n';
    for (const FileChange& change : result.changes.files)
        text += Printable(change.path) + ": " + change.what + '\n';
    if (text.empty()) text = "nothing changed\n";
    for (const std::string& problem : result.problems) text += problem + '\n';
    return text;
}

std::string objectsText(const RunResult& result) {
    if (result.objectsLeft.empty()) return {};
    std::string text =
        "warning: " + Counted(result.objectsLeft.size(), "platform object") + " never released:\n";
    for (const std::string& object : result.objectsLeft) text += "  " + Printable(object) + '\n';
    return text;
}

} // namespace

std::string Line(const PreferenceChange& change) {
    return Printable(change.domain) + ' ' + Printable(change.key) + ": " + Describe(change.before) + " -> " +
           Describe(change.after);
}

std::string Line(const FinderFlagChange& change) {
    return Printable(change.path) + ": " + Describe(change.flag) + ' ' +
           DescribeSetting(change.flag, change.before) + " -> " + DescribeSetting(change.flag, change.after);
}

std::string RunReport(const RunResult& result, const Verdict& verdict, const Style& style) {
    const std::string last =
        verdict.status == ExitStatus::kDone ? style.Good(verdict.text) : style.Bad(verdict.text);
    if (verdict.status == ExitStatus::kNotLoaded && result.changes.Count() == 0) return last + '\n';
    std::string text = "bundle  " + Printable(result.bundle) + "\nvolume  " + volumeText(result) + "\n\n";
    for (const CallRecord& call : result.calls) {
        if (isShown(call, result.hasTrace)) text += callText(call, style);
    }
    return text + '\n' + effectsText(result) + objectsText(result) + last + '\n';
}

} // namespace xcodhost
