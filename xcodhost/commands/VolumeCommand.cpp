#include "VolumeCommand.h"

#include "Console.h"
#include "DisplayText.h"
#include "JsonDocument.h"

namespace xcodhost {

ExitStatus VolumeCommand(const VolumeOptions& options) {
    const std::size_t made = MakeSampleVolume(options.folder, options.sample);
    if (options.isJson) {
        WriteResult(DumpDocument(
            {{"command", "volume"}, {"volume", options.folder}, {"itemsMade", made}, {"exitStatus", 0}}));
        return ExitStatus::kDone;
    }
    WriteResult("DONE " + Printable(options.folder) + ": " +
                (made == 0 ? "already complete, nothing was changed" : Counted(made, "item") + " made") +
                '\n');
    return ExitStatus::kDone;
}

} // namespace xcodhost
