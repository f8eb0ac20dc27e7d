// Benchmarks of strings: formatting and parsing numbers, and replacing placeholders.

#include "Comparison.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>

#ifdef BENCH_FMT
#include <fmt/format.h>
#endif
#ifdef BENCH_POCO
#include <Poco/NumberFormatter.h>
#include <Poco/NumberParser.h>
#endif

namespace {

using comparison::Comparison;
using comparison::Opaque;

constexpr std::array<int, 8> kInts = {0, 7, -42, 1999, 65536, -1234567, 2147483647, 100};
constexpr std::array<long long, 8> kWideInts = {0,           -7,        4294967296LL, 1234567890123LL,
                                                -9876543210, 1LL << 62, 86400000,     20111231};
constexpr std::array<double, 8> kDoubles = {0.0,    1.5,      -3.14159265, 44100.0,
                                            0.0001, 1234.567, 99999.875,   -0.333333333};

/// Returns a function that does the work on the next of eight values at each call.
template <typename Value, typename Work>
auto onNext(const std::array<Value, 8>& values, Work work) {
    return [values, work, i = 0u]() mutable { return work(Opaque(values)[i++ % 8]); };
}

template <typename Value>
auto printed(const std::array<Value, 8>& values, const char* format) {
    return onNext(values, [format](Value v) {
        char text[64];
        static_cast<void>(std::snprintf(text, sizeof text, format, v));
        return std::string(text);
    });
}

template <typename Value, typename... Arguments>
auto withCharconv(const std::array<Value, 8>& values, Arguments... arguments) {
    return onNext(values, [arguments...](Value v) {
        char text[64];
        const std::to_chars_result end = std::to_chars(text, text + sizeof text, v, arguments...);
        return std::string(text, end.ptr);
    });
}

void enterIntegers() {
    Comparison("number_int")
        .Add("ours", onNext(kInts, [](int v) { return String::Number(v); }))
        .Add("snprintf", printed(kInts, "%d"))
        .Add("to_string", onNext(kInts, [](int v) { return std::to_string(v); }))
        .Add("make_shared",
             onNext(kInts, [](int v) { return std::make_shared<std::string>(std::to_string(v)); }))
#ifdef BENCH_POCO
        .Add("Poco", onNext(kInts, [](int v) { return Poco::NumberFormatter::format(v); }))
#endif
#ifdef BENCH_QT
        .Add("QString", onNext(kInts, [](int v) { return QString::number(v); }))
#endif
        ;
    constexpr std::array<unsigned int, 8> bits = {0, 255, 4096, 0xDEADBEEF, 0x1F, 0xFFFFFFFF, 31, 0xABCDE};
    Comparison("number_uint_hex")
        .Add("ours", onNext(bits, [](unsigned int v) { return String::Number(v, 16); }))
        .Add("snprintf", printed(bits, "%X"))
#ifdef BENCH_FMT
        .Add("fmt", onNext(bits, [](unsigned int v) { return fmt::format("{:X}", v); }))
#endif
#ifdef BENCH_POCO
        .Add("Poco", onNext(bits, [](unsigned int v) { return Poco::NumberFormatter::formatHex(v); }))
#endif
#ifdef BENCH_QT
        .Add("QString", onNext(bits, [](unsigned int v) { return QString::number(v, 16).toUpper(); }))
#endif
        ;
    Comparison("number_int64")
        .Add("ours", onNext(kWideInts, [](long long v) { return String::Number(v); }))
        .Add("snprintf", printed(kWideInts, "%lld"))
#ifdef BENCH_FMT
        .Add("fmt", onNext(kWideInts, [](long long v) { return fmt::format("{}", v); }))
#endif
#ifdef BENCH_QT
        .Add("QString", onNext(kWideInts, [](long long v) { return QString::number(v); }))
#endif
        ;
}

void enterDoubles() {
    Comparison("number_double")
        .Add("ours", onNext(kDoubles, [](double v) { return String::Number(v); }))
        .Add("snprintf", printed(kDoubles, "%f"))
        .Add("charconv", withCharconv(kDoubles, std::chars_format::fixed, 6))
#ifdef BENCH_QT
        .Add("QString", onNext(kDoubles, [](double v) { return QString::number(v, 'f', 6); }))
#endif
        ;
    Comparison("number_double_p2")
        .Add("ours", onNext(kDoubles, [](double v) { return String::Number(v, 2); }))
        .Add("snprintf", printed(kDoubles, "%.2f"))
        .Add("charconv", withCharconv(kDoubles, std::chars_format::fixed, 2))
#ifdef BENCH_QT
        .Add("QString", onNext(kDoubles, [](double v) { return QString::number(v, 'f', 2); }))
#endif
        ;
    Comparison("number_double_e")
        .Add("ours", onNext(kDoubles, [](double v) { return String::Number(v, 4, 'e'); }))
        .Add("snprintf", printed(kDoubles, "%.4e"))
        .Add("charconv", withCharconv(kDoubles, std::chars_format::scientific, 4))
#ifdef BENCH_QT
        .Add("QString", onNext(kDoubles, [](double v) { return QString::number(v, 'e', 4); }))
#endif
        ;
}

template <typename Number, typename... Base>
auto parsedByCharconv(const std::array<std::string, 8>& texts, Base... base) {
    return onNext(texts, [base...](const std::string& s) {
        Number v = 0;
        std::from_chars(s.data(), s.data() + s.size(), v, base...);
        return v;
    });
}

template <typename Text>
std::array<Text, 8> as(const std::array<std::string, 8>& texts) {
    std::array<Text, 8> result;
    for (std::size_t i = 0; i < texts.size(); ++i) result[i] = Text(texts[i].c_str());
    return result;
}

void enterIntegerParsing(const char* job, const std::array<std::string, 8>& texts, unsigned int base) {
    const int intBase = static_cast<int>(base);
    Comparison(job)
        .Add("ours", onNext(as<String>(texts), [base](const String& s) { return s.ToInt(nullptr, base); }))
        .Add("strtol", onNext(texts,
                              [intBase](const std::string& s) {
                                  char* end = nullptr;
                                  return static_cast<int>(std::strtol(s.c_str(), &end, intBase));
                              }))
        .Add("charconv", parsedByCharconv<int>(texts, intBase))
#ifdef BENCH_QT
        .Add("QString",
             onNext(as<QString>(texts), [intBase](const QString& s) { return s.toInt(nullptr, intBase); }))
#endif
        ;
}

void enterParsing() {
    enterIntegerParsing("to_int", {"0", "42", "-17", "1999", "65536", "-1234567", "2147483647", "100"}, 10);
    enterIntegerParsing("to_int_hex", {"0", "2A", "1f", "FFFF", "7FFFFFFF", "abcdef", "10", "1234567"}, 16);
    const std::array<std::string, 8> texts = {"0.5", "44100", "-3.25",  "0.000125",
                                              "1e3", "99.99", "-0.707", "123456.789"};
    Comparison("to_double")
        .Add("ours", onNext(as<String>(texts), [](const String& s) { return s.ToDouble(); }))
        .Add("strtod", onNext(texts, [](const std::string& s) { return std::strtod(s.c_str(), nullptr); }))
        .Add("charconv", parsedByCharconv<double>(texts))
#ifdef BENCH_QT
        .Add("QByteArray", onNext(as<QByteArray>(texts), [](const QByteArray& s) { return s.toDouble(); }))
        .Add("QString", onNext(as<QString>(texts), [](const QString& s) { return s.toDouble(); }))
#endif
        ;
}

constexpr char kOneValue[] = "Attempt to seek to %1 when not open";
constexpr char kThreeValues[] = "Can't extract %1 bytes at position %2, total size %3";
constexpr char kOneText[] = "InstalledProducts/%1/CurrentVersion";

/// Replaces the "%1" of the text with functions of std::string.
std::string replaced(std::string text, const std::string& argument) {
    return text.replace(text.find("%1"), 2, argument);
}

void enterArguments() {
    Comparison("arg_int")
        .Add("ours", [t = String(kOneValue), v = 4096]() mutable { return Opaque(t).Arg(Opaque(v)); })
        .Add("replace", [t = std::string(kOneValue),
                         v = 4096]() mutable { return replaced(Opaque(t), std::to_string(Opaque(v))); })
#ifdef BENCH_FMT
        .Add("fmt",
             [v = 4096]() mutable { return fmt::format("Attempt to seek to {} when not open", Opaque(v)); })
#endif
#ifdef BENCH_QT
        .Add("QString", [t = QString(kOneValue), v = 4096]() mutable { return Opaque(t).arg(Opaque(v)); })
#endif
        ;
    Comparison("arg_3_ints")
        .Add("ours", [t = String(kThreeValues),
                      v = 4096]() mutable { return Opaque(t).Arg(Opaque(v)).Arg(Opaque(v)).Arg(Opaque(v)); })
        .Add("printf",
             [v = 4096]() mutable {
                 char text[128];
                 const int n =
                     std::snprintf(text, sizeof text, "Can't extract %d bytes at position %d, total size %d",
                                   Opaque(v), Opaque(v), Opaque(v));
                 return std::string(text, static_cast<std::size_t>(n));
             })
#ifdef BENCH_FMT
        .Add("fmt",
             [v = 4096]() mutable {
                 return fmt::format("Can't extract {} bytes at position {}, total size {}", Opaque(v),
                                    Opaque(v), Opaque(v));
             })
#endif
#ifdef BENCH_QT
        .Add("QString",
             [t = QString(kThreeValues), v = 4096]() mutable {
                 return Opaque(t).arg(Opaque(v)).arg(Opaque(v)).arg(Opaque(v));
             })
#endif
        ;
    Comparison("arg_text")
        .Add("ours",
             [t = String(kOneText), a = String("Fusewright")]() mutable { return Opaque(t).Arg(Opaque(a)); })
        .Add("replace", [t = std::string(kOneText),
                         a = std::string("Fusewright")]() mutable { return replaced(Opaque(t), Opaque(a)); })
#ifdef BENCH_FMT
        .Add("fmt",
             [a = std::string("Fusewright")]() mutable {
                 return fmt::format("InstalledProducts/{}/CurrentVersion", Opaque(a));
             })
#endif
#ifdef BENCH_QT
        .Add("QString", [t = QString(kOneText),
                         a = QString("Fusewright")]() mutable { return Opaque(t).arg(Opaque(a)); })
#endif
        ;
}

[[maybe_unused]] const bool kRegistered =
    (enterIntegers(), enterDoubles(), enterParsing(), enterArguments(), true);

} // namespace
