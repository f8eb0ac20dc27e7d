#pragma once

#include <PostInstall/XCodParamBlock.h>

/// Reports a rejected call: shows a message box and the stop alert, and sets the error bit of the block.
/// `PreInstall` and `PostInstall` show the same texts.
void ReportRejectedCall(XCodParamBlock& block);
