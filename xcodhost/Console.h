#pragma once

/// The tool's standard output and standard error, and colour on a terminal.

#include <string>

namespace xcodhost {

/// Opens the null device for each standard stream that the caller has closed. Otherwise another file or
/// socket of the tool would get the number of that stream. Ignores SIGPIPE: a write to a reader that has gone
/// fails with EPIPE and does not end the process.
void PrepareStandardStreams();

/// Writes the result to standard output. Throws `ToolFault` on an error, unless the reader has gone.
void WriteResult(const std::string& text);

/// Writes "xcodhost: " and the escaped line to standard error. Ignores errors.
void Note(const std::string& line);

/// Writes the unchanged text to standard error. Ignores errors.
void WriteError(const std::string& text);

/// Adds colour to text.
class Style {
public:
    /// Enables colour if standard output is a terminal, unless NO_COLOR is set and not empty.
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
