#pragma once

#include <macplatform/CallLog.h>

#include <cerrno>
#include <string>
#include <vector>

/// While one lives, notes the platform's calls as "CALL(ARGUMENT, ARGUMENT) = RESULT".
class CallRecorder {
public:
    CallRecorder() {
        macplatform::SetCallObserver([this](const macplatform::RecordedCall& entry) {
            std::string arguments;
            for (const auto& argument : entry.arguments)
                arguments += (arguments.empty() ? "" : ", ") + argument;
            lines.push_back(entry.call + '(' + arguments + ") = " + entry.result);
            errno = 0; // what an observer does must not show
        });
    }
    CallRecorder(const CallRecorder&) = delete;
    CallRecorder& operator=(const CallRecorder&) = delete;
    ~CallRecorder() { macplatform::SetCallObserver({}); }

    std::vector<std::string> lines;
};
