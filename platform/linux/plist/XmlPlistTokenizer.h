#pragma once

/// @file
/// Splits an XML property list into tags and texts. The Mac's reader is no conforming XML reader: a tag ends
/// at the first '>', attributes are ignored, line ends stay as they are, and most bytes are accepted in
/// texts.

#include <cstddef>
#include <string>
#include <string_view>

namespace macplatform {

struct XmlTag {
    std::string_view name;
    bool isEmpty;      ///< `<name/>`
    std::size_t begin; ///< The offset of the '<'.
};

/// Reads the text from its start to its end. Every function throws `PropertyListError`, with the number of
/// the line, if the text does not continue as the function expects.
class XmlPlistTokenizer {
public:
    /// The text is UTF-8, except in comments, and must outlive the tokenizer.
    XmlPlistTokenizer(std::string_view source, std::size_t start) : text(source), position(start) {}

    std::size_t Position() const { return position; } ///< The offset behind what was read.

    void SkipProlog(); ///< Skips everything before the first element.
    /// Skips white space, comments and processing instructions.
    void SkipBetweenElements();
    bool IsAtEndTag() const { return StartsWith("</"); }
    XmlTag ReadStartTag();
    void ReadEndTag(std::string_view name);
    /// Returns the text up to the next tag, with decoded references and CDATA sections.
    std::string ReadText();
    std::string_view ReadRawText(); ///< Returns the bytes up to the next '<'.

    [[noreturn]] void Refuse(const std::string& reason) const;

private:
    bool StartsWith(std::string_view token) const { return text.substr(position, token.size()) == token; }
    void SkipSpace();
    /// Skips a construct that is `open` characters long before its contents and ends with the mark.
    std::string_view SkipConstruct(std::size_t open, std::string_view mark, const char* name);
    std::string ReadReference();

    std::string_view text;
    std::size_t position;
};

} // namespace macplatform
