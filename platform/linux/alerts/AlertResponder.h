#pragma once

#include <macplatform/Alerts.h>

namespace macplatform {

/// Passes the alert to the alert responder. Returns the index of the chosen button, and -1 if the alert was
/// not shown or the answer is not the index of a button.
int Present(Alert alert);

} // namespace macplatform
