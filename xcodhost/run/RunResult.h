#pragma once

/// What one run showed, before it is put into words.

#include "ExitStatus.h"
#include "process/Child.h"
#include "process/Messages.h"
#include "volume/Changes.h"

#include <optional>
#include <string>
#include <vector>

namespace xcodhost {

struct AlertRecord {
    macplatform::Alert alert;
    int answer = -1;  ///< The place of a button; -1: not shown.
    std::string note; ///< Why it was not shown.

    /// The chosen button's title; empty when it was not shown.
    std::string Title() const;
};

/// A synchronise that answered false.
struct LostWrite {
    std::string domain;
    std::string reason; ///< Empty when the platform gave none.
};

/// One call into the bundle, with what happened while it ran.
struct CallRecord {
    CallBegan call;
    std::optional<CallReturned> returned; ///< Nothing: the child ended inside, or an exception left it.
    std::vector<AlertRecord> alerts;
    std::vector<macplatform::RecordedCall> platformCalls; ///< Empty unless they were asked for.
    std::vector<LostWrite> lostWrites;

    /// "XCodMain(selector 1000, ...)"
    std::string Describe() const;
    /// Bits that the call set in the error flags.
    std::uint32_t NewErrorBits() const;
};

struct RunResult {
    std::string bundle;
    std::string volume; ///< As it was named; empty for the scratch sample volume.
    bool isDryRun = false;
    bool hasTrace = false;

    std::vector<CallRecord> calls;
    std::optional<LoadFailed> loadFailure;
    std::optional<ExceptionEscaped> exception; ///< It left the last call.
    std::vector<std::string> objectsLeft;
    ChildEnd end;

    Changes changes;
    std::vector<std::string> problems; ///< One line each: what could not be read or stored.
};

struct Verdict {
    ExitStatus status = ExitStatus::kDone;
    std::string text; ///< "DONE 5 changes", "FAIL ..."
};

Verdict Judge(const RunResult& result);

/// "SIGSEGV (Segmentation fault)"
std::string SignalName(int number);

} // namespace xcodhost
