#include <Kelbase/Util/ModalDialog.h>

namespace Util {

bool IsModalDialogAllowed() { return true; }

} // namespace Util
