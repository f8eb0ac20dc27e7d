#pragma once

/// The program's own two output streams.

#include <string>

namespace xcodhost {

/// Opens the null device in place of standard streams that the caller closed, so that no file or socket of
/// ours gets their numbers, and makes a reader that went away an error of the write instead of a deadly
/// signal.
void PrepareStandardStreams();

/// Writes the result. A reader that went away is not told; any other refusal is a ToolFault.
void WriteResult(const std::string& text);

/// One line on standard error, "xcodhost: " before it.
void Note(const std::string& line);

/// Text on standard error as it is; what cannot be written is lost.
void WriteError(const std::string& text);

/// Colour, where standard output is a terminal and the environment has no NO_COLOR.
class Style {
public:
    Style();
    explicit Style(bool colour) : isColoured(colour) {}

    std::string Good(const std::string& text) const { return Wrapped("32;1", text); }
    std::string Bad(const std::string& text) const { return Wrapped("31;1", text); }
    std::string Heading(const std::string& text) const { return Wrapped("1", text); }

private:
    std::string Wrapped(const char* code, const std::string& text) const;
    bool isColoured;
};

} // namespace xcodhost
