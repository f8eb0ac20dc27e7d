#include "MarkupText.h"

#include "DisplayText.h"

namespace xcodhost {

std::string MarkupText(std::string_view text) {
    std::string out;
    for (const char c : Printable(text)) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

} // namespace xcodhost
