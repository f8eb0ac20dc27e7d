#include "SharedOptions.h"

#include "DisplayText.h"
#include "ExitStatus.h"

#include <CLI/CLI.hpp>
#include <macplatform/Bundles.h>

#include <charconv>
#include <string_view>

namespace xcodhost {

namespace {

constexpr double kLongestLimit = 86400;

std::int64_t parseInteger(const std::string& name, const std::string& text, std::int64_t lowest,
                          std::int64_t highest) {
    std::string_view digits = text;
    const bool isNegative = !digits.empty() && digits.front() == '-';
    if (isNegative) digits.remove_prefix(1);
    const bool isHex = digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    if (isHex) digits.remove_prefix(2);
    std::int64_t value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, isHex ? 16 : 10);
    const bool isWhole =
        error == std::errc() && end == digits.data() + digits.size() && digits.front() != '-';
    if (isNegative) value = -value;
    if (!isWhole || value < lowest || value > highest) {
        throw UsageError(name + ": " + PrintableQuoted(text) + " is not a whole number from " +
                         std::to_string(lowest) + " to " + std::to_string(highest));
    }
    return value;
}

double parseSeconds(const std::string& text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !(value > 0) || value > kLongestLimit) {
        throw UsageError("--timeout: " + PrintableQuoted(text) +
                         " is not a number of seconds above 0 and up to 86400");
    }
    return value;
}

} // namespace

void AddInteger(CLI::App& parser, const std::string& name, std::int64_t lowest, std::int64_t highest,
                const std::function<void(std::int64_t)>& accept, const std::string& description) {
    const auto parse = [=](const std::string& text) { accept(parseInteger(name, text, lowest, highest)); };
    parser.add_option_function<std::string>(name, parse, description)->type_name("N");
}

void AddTimeout(CLI::App& parser, double& seconds, const std::string& remark) {
    const auto parse = [&seconds](const std::string& text) { seconds = parseSeconds(text); };
    parser
        .add_option_function<std::string>("--timeout", parse,
                                          "Time limit of one call in seconds (default 10)" + remark)
        ->type_name("N");
}

void AddJson(CLI::App& parser, bool& isJson) { parser.add_flag("--json", isJson, "Print one JSON document"); }

void AddMac(CLI::App& parser) {
    const auto prefer = [] {
        if (!macplatform::SetPrefersMacCode(true))
            throw UsageError(
                "--mac: this build cannot run code for the Mac; use the 32-bit build of the tool");
    };
    parser.add_flag_callback("--mac", prefer,
                             "Load the bundle's executable for the Mac instead of the one for Linux");
}

} // namespace xcodhost
