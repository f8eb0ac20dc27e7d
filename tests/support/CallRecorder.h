#pragma once

#include <macplatform/CallLog.h>

#include <cerrno>
#include <string>
#include <vector>

/// Records the platform calls in `lines` as "CALL(ARGUMENT, ARGUMENT) = RESULT". The destructor ends this.
class CallRecorder {
public:
    CallRecorder() {
        macplatform::SetCallObserver([this](const macplatform::RecordedCall& entry) {
            std::string arguments;
            for (const auto& argument : entry.arguments)
                arguments += (arguments.empty() ? "" : ", ") + argument;
            lines.push_back(entry.call + '(' + arguments + ") = " + entry.result);
            errno = 0; // an observer must not affect the errno of a platform call
        });
    }
    CallRecorder(const CallRecorder&) = delete;
    CallRecorder& operator=(const CallRecorder&) = delete;
    ~CallRecorder() { macplatform::SetCallObserver({}); }

    std::vector<std::string> lines;
};
