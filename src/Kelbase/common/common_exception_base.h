#pragma once

#include <Kelbase/common/common_string.h>

namespace Exception {

/// Base class of the library's own exceptions: a message and the place in the sources that threw it.
///
/// Running out of memory throws `std::bad_alloc` and a size that is too large `std::length_error` instead.
/// This class is deliberately no `std::exception`, so that a handler for those never catches a failed access.
/// Copies share their text.
class Base {
public:
    /// `message` says what failed, without the place; the location is not set.
    explicit Base(const String& message);
    ///@{
    /// Shares the texts of the other one, so nothing is allocated while an exception is on its way.
    Base(const Base&) = default;
    Base& operator=(const Base&) = default;
    ///@}
    virtual ~Base();

    /// Returns the failure as text of several lines: the message, and the place as the last line, ended by a
    /// line feed. Derived classes append lines of their own.
    virtual String ToString() const;

    String GetMessageText() const { return message; } ///< As it was given, in one line or several.
    String GetFilename() const { return filename; }   ///< Empty until the location is set.
    int GetLineNumber() const;                        ///< Low 32 bits of the line; -1 until it is set.

    /// To be called by the thrower, before it throws.
    void SetLocation(const String& file, long long line);

private:
    String message;
    String filename;
    long long lineNumber = -1;
};

} // namespace Exception
