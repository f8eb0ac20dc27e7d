#pragma once

#include <Kelbase/Util/ModalDialog.h>
#include <Kelbase/common/common_string.h>

#include <vector>

/// Boxes that ask the user something and wait for the answer.
///
/// Only the message is shown here; `parent`, the title, the focus and the trailing flag serve platforms that
/// can use them. A text that is not UTF-8 is shown as an empty one. Nothing here throws of its own accord.
/// While `Util::IsModalDialogAllowed()` is false, nothing is shown and the result is false. If the platform
/// could not show the box, the result is false too.
namespace UI::Native {

///@{
/// Which button answers the Return key, counted as they are named.
enum class OKCancelFocus { FirstButton, SecondButton };
enum class YesNoFocus { FirstButton, SecondButton };
enum class YesNoCancelFocus { FirstButton, SecondButton, ThirdButton };
enum class RetryCancelFocus { FirstButton, SecondButton };
///@}

/// Waits until the box is closed.
void MessageOK(void* parent, const String& title, const String& message, bool);
/// UTF-16 without a terminator. `second` is the message; nothing is shown when it or `third` is empty.
void MessageOK(void* parent, const std::vector<unsigned short>& first,
               const std::vector<unsigned short>& second, const std::vector<unsigned short>& third, bool);

/// True for "OK".
bool MessageOKCancel(void* parent, const String& title, const String& message, OKCancelFocus focus, bool);
/// True for "Yes".
bool MessageYesNo(void* parent, const String& title, const String& message, YesNoFocus focus, bool);
/// True for "Yes". Sets `cancelled` to true for "Cancel" and if the platform could not show the box, to false
/// for "Yes" and "No". Leaves `cancelled` as it is while no box may be shown.
bool MessageYesNoCancel(bool& cancelled, void* parent, const String& title, const String& message,
                        YesNoCancelFocus focus, bool);
/// Shows "OK", "Cancel", "Retry", "Cancel"; true for "OK" alone.
bool MessageRetryCancel(void* parent, const String& title, const String& message, RetryCancelFocus focus,
                        bool);

} // namespace UI::Native
