#include "PluginContract.h"

#include "DisplayText.h"

#include <array>
#include <cstring>

namespace xcodhost {

std::string Describe(const CFUUIDBytes& identifier) {
    std::array<unsigned char, sizeof(CFUUIDBytes)> bytes{};
    std::memcpy(bytes.data(), &identifier, bytes.size());
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += Hex(bytes[i], 2).substr(2);
    }
    return text;
}

std::string EventName(std::uint16_t message) {
    switch (message) {
    case kPreInstall: return "pre-install";
    case kPostInstall: return "post-install";
    default: return "message " + std::to_string(message);
    }
}

ParameterBlock::ParameterBlock(std::uint16_t selector, std::uint16_t message, std::int32_t product,
                               std::int32_t language)
    : bytes(kSize) {
    SetField(0, selector);
    SetField(2, message);
    SetField(4, product);
    SetField(610, language);
}

std::string ParameterBlock::Describe() const {
    const bool isEvent = Message() == kPreInstall || Message() == kPostInstall;
    return "selector " + std::to_string(Selector()) + ", message " + std::to_string(Message()) +
           (isEvent ? " (" + EventName(Message()) + ")" : "") + ", product " + std::to_string(Product()) +
           ", language " + std::to_string(Language());
}

std::string ParameterBlock::BytesChangedElsewhere(const ParameterBlock& other) const {
    std::string first;
    std::size_t last = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if ((i >= 8 && i < 12) || bytes[i] == other.bytes[i]) continue;
        if (first.empty()) first = std::to_string(i);
        last = i;
    }
    return first.empty() ? first : first + " to " + std::to_string(last);
}

} // namespace xcodhost
