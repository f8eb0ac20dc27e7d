#pragma once

/// Reads the updater's status file and sets the updater's check interval. The interval is 2 if the file
/// begins with "UpdatesEnabled" or is missing, and 0 for any other contents. If the file exists and cannot be
/// read, the interval is 2, and the message of the failure is stored as the install status.
void SetUpdateIntervalFromStatusFile();
