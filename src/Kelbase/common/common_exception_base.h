#pragma once

#include <Kelbase/common/common_string.h>

namespace Exception {

/// What every failure inside the library is thrown as: a message and the place in the sources that threw it.
///
/// Deliberately no `std::exception`, so that a handler for those never swallows one of these. Copies share
/// their text.
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

    /// The failure as text of several lines, ended by a line feed.
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
