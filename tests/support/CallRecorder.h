#pragma once

#include <macplatform/CallLog.h>

#include <cerrno>
#include <string>
#include <vector>

/// Records each platform call as an element of `lines`: "CALL(ARGUMENT, ARGUMENT) = RESULT [NOTE]". The
/// destructor ends the recording.
class CallRecorder {
public:
    CallRecorder() {
        macplatform::SetCallObserver([this](const macplatform::RecordedCall& entry) {
            std::string arguments;
            for (const auto& argument : entry.arguments)
                arguments += (arguments.empty() ? "" : ", ") + argument;
            lines.push_back(entry.call + '(' + arguments + ')' +
                            (entry.result.empty() ? "" : " = " + entry.result) +
                            (entry.note.empty() ? "" : " [" + entry.note + ']'));
            errno = 0; // tests that the errno of an observer does not change the errno of the call
        });
    }
    CallRecorder(const CallRecorder&) = delete;
    CallRecorder& operator=(const CallRecorder&) = delete;
    ~CallRecorder() { macplatform::SetCallObserver({}); }

    std::vector<std::string> lines;
};
