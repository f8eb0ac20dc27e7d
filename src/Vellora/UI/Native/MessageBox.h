#pragma once

/// @file
/// Declares functions that show native message boxes.

#include <Kelbase/Util/ModalDialog.h>
#include <Kelbase/common/common_string.h>

#include <vector>

/// Contains the functions for modal message boxes.
///
/// Each function shows a box and returns when the user has closed it. On this platform the functions show the
/// message and ignore `parent`, the title, the focus and the last flag. A message that is not UTF-8 is shown
/// as an empty message. The functions throw only `std::bad_alloc`. If `Util::IsModalDialogAllowed()` returns
/// false, the functions show nothing and return false. They also return false if the platform cannot show the
/// box.
namespace UI::Native {

///@{
/// Selects the default button. The buttons have the order of the words in the name of the function.
enum class OKCancelFocus { kFirstButton, kSecondButton };
enum class YesNoFocus { kFirstButton, kSecondButton };
enum class YesNoCancelFocus { kFirstButton, kSecondButton, kThirdButton };
enum class RetryCancelFocus { kFirstButton, kSecondButton };
///@}

/// Shows a message and one button.
void MessageOK(void* parent, const String& title, const String& message, bool);
/// Shows a message and one button. The texts are UTF-16 without a terminator. `second` is the message.
/// `first` and `third` are not shown. Shows no box if `second` or `third` is empty.
void MessageOK(void* parent, const std::vector<unsigned short>& first,
               const std::vector<unsigned short>& second, const std::vector<unsigned short>& third, bool);

/// Returns whether the user chose "OK".
bool MessageOKCancel(void* parent, const String& title, const String& message, OKCancelFocus focus, bool);
/// Returns whether the user chose "Yes".
bool MessageYesNo(void* parent, const String& title, const String& message, YesNoFocus focus, bool);
/// Returns whether the user chose "Yes". Sets `cancelled` to true if the user chose "Cancel" or the platform
/// cannot show the box, and to false otherwise. Does not change `cancelled` if `Util::IsModalDialogAllowed()`
/// returns false.
bool MessageYesNoCancel(bool& cancelled, void* parent, const String& title, const String& message,
                        YesNoCancelFocus focus, bool);
/// Shows the buttons "OK", "Cancel", "Retry" and "Cancel". Returns whether the user chose "OK".
bool MessageRetryCancel(void* parent, const String& title, const String& message, RetryCancelFocus focus,
                        bool);

} // namespace UI::Native
