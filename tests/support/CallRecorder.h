#pragma once

#include <macplatform/CallLog.h>

#include <cerrno>
#include <string>
#include <vector>

/// While one lives, notes the platform's calls as "CALL(ARGUMENT, ARGUMENT) = RESULT".
class ToldCalls {
public:
    ToldCalls() {
        macplatform::SetJournalObserver([this](const macplatform::JournalEntry& entry) {
            std::string arguments;
            for (const auto& argument : entry.arguments)
                arguments += (arguments.empty() ? "" : ", ") + argument;
            lines.push_back(entry.call + '(' + arguments + ") = " + entry.result);
            errno = 0; // what an observer does must not show
        });
    }
    ToldCalls(const ToldCalls&) = delete;
    ToldCalls& operator=(const ToldCalls&) = delete;
    ~ToldCalls() { macplatform::SetJournalObserver({}); }

    std::vector<std::string> lines;
};
