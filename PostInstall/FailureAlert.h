#pragma once

#include <PostInstall/XCodParamBlock.h>

/// Reports a rejected call with an alert and the error bit. Both steps use the texts of the post-install
/// step.
void ReportRefusedCall(XCodParamBlock& block);
