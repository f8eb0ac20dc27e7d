#pragma once

#include <MacTypes.h>

using DialogItemIndex = SInt16;
using DialogRef = struct OpaqueDialogPtr*;
struct EventRecord;
using ModalFilterUPP = Boolean (*)(DialogRef, EventRecord*, DialogItemIndex*);

MACPLATFORM_C_BEGIN

/// Shows the alert of this resource number with the stop icon. The number of the item chosen, or -1 when
/// nothing was shown, for instance because no open resource file has the alert.
DialogItemIndex StopAlert(SInt16 alertID, ModalFilterUPP filter);

MACPLATFORM_C_END
