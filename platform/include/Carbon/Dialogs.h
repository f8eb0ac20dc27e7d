#pragma once

/// Alerts of the Dialog Manager.

#include <MacTypes.h>

using DialogItemIndex = SInt16;
using DialogRef = struct OpaqueDialogPtr*;
struct EventRecord;
using ModalFilterUPP = Boolean (*)(DialogRef, EventRecord*, DialogItemIndex*);

MACPLATFORM_C_BEGIN

/// Shows the alert with this resource number and the stop icon. Returns the number of the chosen item,
/// from 1. Returns -1 if the alert was not shown, for instance because no open resource file contains the
/// alert.
DialogItemIndex StopAlert(SInt16 alertID, ModalFilterUPP filter);

MACPLATFORM_C_END
