#pragma once

#include <Kelbase/common/common_string.h>

namespace Exception {

/// Base class of the library's own exceptions: a message and the place in the sources that threw it.
///
/// The library throws `std::bad_alloc` for lack of memory and `std::length_error` for a size that is too
/// large. `Base` does not derive from `std::exception`, so that a handler for `std::exception` never catches
/// a failed access. Copies share their text.
class Base {
public:
    /// `message` says what failed, without the place. The location is not set.
    explicit Base(const String& message);
    ///@{
    /// Shares the texts of the other object, so that copying an exception allocates nothing.
    Base(const Base&) = default;
    Base& operator=(const Base&) = default;
    ///@}
    virtual ~Base();

    /// Returns the failure as several lines: the message, then the place. A line feed ends the text. A
    /// derived class appends lines of its own.
    virtual String ToString() const;

    String GetMessageText() const { return message; } ///< Returns the message of the constructor.
    String GetFilename() const { return filename; }   ///< Returns "" until the location is set.
    int GetLineNumber() const; ///< Returns the low 32 bits of the line, -1 until it is set.

    /// Sets the place. The thrower calls `SetLocation` before it throws.
    void SetLocation(const String& file, long long line);

private:
    String message;
    String filename;
    long long lineNumber = -1;
};

} // namespace Exception
