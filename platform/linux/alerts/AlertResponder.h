#pragma once

#include <macplatform/Alerts.h>

namespace macplatform {

/// Asks the presenter: the place of the chosen button, or -1 when the alert was not shown or the answer is no
/// button.
int Present(Alert alert);

} // namespace macplatform
