#pragma once

/// @file
/// What the user is told of a refused call.

#include <PostInstall/XCodParamBlock.h>

/// Tells the user and the host that a step refused the block. Both steps use the same texts, the
/// post-installation's.
void ReportRefusedCall(XCodParamBlock& block);
