#pragma once

/// Reads the updater's status file and stores the updater's check interval in the preferences. The interval
/// is 2 if the file is missing or begins with "UpdatesEnabled". The interval is 0 (no updates) for any other
/// contents. If the file exists but cannot be read, the interval is 2, and the error message is stored under
/// the key "InstallStatus". Throws `std::bad_alloc`.
void SetUpdateIntervalFromStatusFile();
