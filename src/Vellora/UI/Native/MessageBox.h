#pragma once

/// @file
/// Native message boxes.

#include <Kelbase/Util/ModalDialog.h>
#include <Kelbase/common/common_string.h>

#include <vector>

/// Modal message boxes.
///
/// Each function shows a box and returns when the user has closed it. This platform shows the message only:
/// it ignores `parent`, the title, the focus and the trailing flag. A message that is not UTF-8 is shown as
/// an empty one. The functions throw nothing except for lack of memory. While `Util::IsModalDialogAllowed()`
/// returns false, they show nothing and return false. They also return false if the platform could not show
/// the box.
namespace UI::Native {

///@{
/// The default button. The buttons are counted in the order of the function's name.
enum class OKCancelFocus { kFirstButton, kSecondButton };
enum class YesNoFocus { kFirstButton, kSecondButton };
enum class YesNoCancelFocus { kFirstButton, kSecondButton, kThirdButton };
enum class RetryCancelFocus { kFirstButton, kSecondButton };
///@}

/// Shows a message and one button.
void MessageOK(void* parent, const String& title, const String& message, bool);
/// Shows a message and one button. The texts are UTF-16 without a terminator. `second` is the message. Shows
/// nothing if `second` or `third` is empty.
void MessageOK(void* parent, const std::vector<unsigned short>& first,
               const std::vector<unsigned short>& second, const std::vector<unsigned short>& third, bool);

/// Returns true for "OK".
bool MessageOKCancel(void* parent, const String& title, const String& message, OKCancelFocus focus, bool);
/// Returns true for "Yes".
bool MessageYesNo(void* parent, const String& title, const String& message, YesNoFocus focus, bool);
/// Returns true for "Yes". Sets `cancelled` to true for "Cancel" and if the platform could not show the box,
/// and to false for "Yes" and "No". Leaves `cancelled` unchanged while no box may be shown.
bool MessageYesNoCancel(bool& cancelled, void* parent, const String& title, const String& message,
                        YesNoCancelFocus focus, bool);
/// Shows the buttons "OK", "Cancel", "Retry" and "Cancel". Returns true only for "OK".
bool MessageRetryCancel(void* parent, const String& title, const String& message, RetryCancelFocus focus,
                        bool);

} // namespace UI::Native
