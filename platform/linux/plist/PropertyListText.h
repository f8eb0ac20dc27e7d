#pragma once

#include <cstddef>
#include <string>

namespace macplatform {

/// A property list in UTF-8. The file may have another encoding.
struct PropertyListText {
    std::string text;
    std::size_t start = 0;     ///< The offset behind a byte order mark.
    std::string convertedFrom; ///< The name of the encoding of the file. Empty for UTF-8.
};

/// Decodes UTF-16 and UTF-32 with a byte order mark, and every encoding that an XML declaration names at the
/// start of the file. Converted text declares UTF-8. Throws `PropertyListError` if the encoding is unknown or
/// the bytes are invalid in it. UTF-8 is not checked.
PropertyListText DecodePropertyListText(const std::string& bytes);

} // namespace macplatform
