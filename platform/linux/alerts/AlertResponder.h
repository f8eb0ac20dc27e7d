#pragma once

#include <macplatform/Alerts.h>

namespace macplatform {

/// Passes the alert to the alert responder. Returns the index of the chosen button. Returns -1 if the alert
/// was not shown, or if the answer of the responder is not the index of a button. Without a responder,
/// returns 0 for a message and -1 for a stop alert.
int Present(Alert alert);

} // namespace macplatform
