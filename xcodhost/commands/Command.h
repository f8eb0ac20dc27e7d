#pragma once

/// Declares the commands of the tool. The source of a command defines its help text, its options and its
/// work.

#include "ExitStatus.h"

#include <functional>

namespace CLI {
class App;
}

namespace xcodhost {

/// Executes a command. Throws UsageError, ToolFault and Interrupted.
using Work = std::function<ExitStatus()>;

struct Command {
    const char* name;
    const char* summary;
    /// Adds the options and examples to the parser of the command. Returns the work, which may be executed
    /// once the parser has accepted the command line. The parser must outlive the work.
    Work (*describe)(CLI::App& parser);
    bool runsBundles = false; ///< Whether the command starts child processes.
};

extern const Command kRunCommand;
extern const Command kValidateCommand;
extern const Command kShowCommand;
extern const Command kVolumeCommand;
extern const Command kInfoCommand;
extern const Command kListCommand;
extern const Command kExplainCommand;

} // namespace xcodhost
