#pragma once

/// @file
/// What the updater is told about its check interval.

/// Reads the status file that the updater left and sets the updater's check interval from it: 2 when the
/// file says that updates are enabled, 0 when it says anything else. Without a file that can be read the
/// interval is 2, and why a present one could not be read is stored for the updater.
void SetUpdateIntervalFromStatusFile();
