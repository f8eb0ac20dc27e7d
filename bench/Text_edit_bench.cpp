// Benchmarks of strings: searching, slicing, replacing, cleaning, splitting and joining.

#include "Comparison.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <random>
#include <strings.h>

#ifdef BENCH_FMT
#include <fmt/format.h>
#endif
#ifdef BENCH_POCO
#include <Poco/String.h>
#endif
#ifdef BENCH_QT
#include <QList>
#include <QStringList>
#endif

namespace {

using comparison::AllTexts;
using comparison::Comparison;
using comparison::Opaque;

/// Returns 4096 bytes of repeated `sentence`.
std::string longText(const std::string& sentence) {
    std::string text;
    while (text.size() < 4096) text += sentence;
    text.resize(4096);
    return text;
}

const std::string kProse =
    longText("The installer asks the Updater for its Status, and the answer is kept. ");
const std::string kPathText = "/Library/Application Support/Korvane/Updater/install_status.txt";

// Searching

template <typename Found>
long long position(const Found& at) {
    return at.IsGiven() ? static_cast<long long>(static_cast<unsigned int>(at)) : -1;
}
long long position(std::size_t at) { return static_cast<long long>(at); }

void enterFind(const std::string& job, const std::string& text, const std::string& part) {
    Comparison(job)
        .Add("ours", [s = String(text.c_str()),
                      p = part]() mutable { return position(Opaque(s).Find(Opaque(p).c_str())); })
        .Add("strstr",
             [s = text, p = part]() mutable {
                 const char* const found = std::strstr(Opaque(s).c_str(), Opaque(p).c_str());
                 return found ? static_cast<long long>(found - s.c_str()) : -1;
             })
        .Add("std", [s = text, p = part]() mutable { return position(Opaque(s).find(Opaque(p))); })
#ifdef BENCH_QT
        .Add("QByteArray",
             [s = QByteArray(text.c_str()), p = QByteArray(part.c_str())]() mutable {
                 return static_cast<long long>(Opaque(s).indexOf(Opaque(p)));
             })
#endif
        ;
}

void enterFindFolded(const std::string& job, const std::string& text, const std::string& part) {
    Comparison(job)
        .Add("ours", [s = String(text.c_str()),
                      p = part]() mutable { return position(Opaque(s).Find(Opaque(p).c_str(), 0, false)); })
        .Add("strcasestr",
             [s = text, p = part]() mutable {
                 const char* const found = strcasestr(Opaque(s).c_str(), Opaque(p).c_str());
                 return found ? static_cast<long long>(found - s.c_str()) : -1;
             })
#ifdef BENCH_QT
        .Add("QString",
             [s = QString(text.c_str()), p = QString(part.c_str())]() mutable {
                 return static_cast<long long>(Opaque(s).indexOf(Opaque(p), 0, Qt::CaseInsensitive));
             })
#endif
        ;
}

void enterSearching() {
    std::string zs = kProse;
    zs[4090] = 'z';
    Comparison("find_char_4K")
        .Add("ours", [s = String(zs.c_str())]() mutable { return position(Opaque(s).Find('z')); })
        .Add("std", [s = zs]() mutable { return position(Opaque(s).find('z')); })
#ifdef BENCH_QT
        .Add(
            "QByteArray",
            [s = QByteArray(zs.c_str())]() mutable { return static_cast<long long>(Opaque(s).indexOf('z')); })
        .Add("QString",
             [s = QString(zs.c_str())]() mutable {
                 return static_cast<long long>(Opaque(s).indexOf(QChar('z')));
             })
#endif
        ;
    std::string rare = kProse, common = kProse;
    rare.replace(4070, 12, "zebra zenith");
    common.replace(4070, 12, "asks the end");
    enterFind("find_text_4K", rare, "zebra zenith");
    enterFind("find_text_4K_common", common, "asks the end");
    enterFind("find_text_short", kPathText, "Korvane");
    enterFindFolded("find_ci_4K", common, "ASKS the End");
    enterFindFolded("find_ci_short", kPathText, "korvane");
    Comparison("begins_ci")
        .Add("ours",
             [s = String(kPathText.c_str()), p = String("/library/application")]() mutable {
                 return Opaque(s).BeginsWith(Opaque(p), false);
             })
        .Add("strncasecmp",
             [s = kPathText, p = std::string("/library/application")]() mutable {
                 return strncasecmp(Opaque(s).c_str(), Opaque(p).c_str(), Opaque(p).size()) == 0;
             })
#ifdef BENCH_QT
        .Add("QString",
             [s = QString(kPathText.c_str()), p = QString("/library/application")]() mutable {
                 return Opaque(s).startsWith(Opaque(p), Qt::CaseInsensitive);
             })
#endif
        ;
}

// Editing

std::string lowered(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + 0x20 : c; });
    return s;
}

std::string replacedAll(std::string s, const std::string& from, const std::string& to) {
    for (std::size_t at = s.find(from); at != s.npos; at = s.find(from, at + to.size()))
        s.replace(at, from.size(), to);
    return s;
}

/// Returns 4096 bytes in about 110 lines of random length.
std::string linesOfProse() {
    std::mt19937 random(5);
    std::string text;
    while (text.size() < 4096) text += kProse.substr(random() % 1024, 20 + random() % 32) + "\n";
    text.resize(4096);
    return text;
}

void enterReplace(const char* job, const std::string& text, const char* from, const char* to) {
    Comparison(job)
        .Add("ours", [s = String(text.c_str()), a = String(from),
                      b = String(to)]() mutable { return Opaque(s).Replace(Opaque(a), Opaque(b)); })
        .Add("std", [s = text, a = std::string(from),
                     b = std::string(to)]() mutable { return replacedAll(Opaque(s), Opaque(a), Opaque(b)); })
#ifdef BENCH_POCO
        .Add("Poco",
             [s = text, a = std::string(from), b = std::string(to)]() mutable {
                 return Poco::replace(Opaque(s), Opaque(a), Opaque(b));
             })
#endif
#ifdef BENCH_QT
        .Add("QByteArray",
             [s = QByteArray(text.c_str()), a = QByteArray(from), b = QByteArray(to)]() mutable {
                 QByteArray copy = Opaque(s);
                 return copy.replace(Opaque(a), Opaque(b));
             })
#endif
        ;
}

void enterLower(const char* job, const std::string& text) {
    Comparison(job)
        .Add("ours", [s = String(text.c_str())]() mutable { return Opaque(s).ToLower(); })
        .Add("std", [s = text]() mutable { return lowered(Opaque(s)); })
#ifdef BENCH_QT
        .Add("QByteArray",
             [s = QByteArray(text.c_str())]() mutable { return std::as_const(Opaque(s)).toLower(); })
#endif
        ;
}

/// Returns 4096 strings of five to seven words with white space of random length between them. With fewer
/// strings, even with a few hundred, the branch predictor of the processor would learn all branches.
std::vector<std::string> untidyTexts() {
    std::mt19937 random(11);
    const std::string blanks = " \t\n  ";
    std::vector<std::string> texts(4096);
    for (std::string& text : texts) {
        for (unsigned long word = 0, words = 5 + random() % 3; word < words; ++word)
            text += std::string(2 + random() % 6, 'w') + blanks.substr(random() % 5);
    }
    return texts;
}

template <typename Text>
auto simplifyInTurn(const std::vector<std::string>& texts) {
    std::vector<Text> list;
    for (const std::string& text : texts) list.push_back(Text(text.c_str()));
    return [list, i = 0u]() mutable {
        const Text& text = Opaque(list)[i++ % list.size()];
        if constexpr (std::is_same_v<Text, String>)
            return text.SimplifyWhiteSpace();
        else
            return text.simplified();
    };
}

void enterSimplify(const char* job, const std::vector<std::string>& texts) {
    Comparison(job)
        .Add("ours", simplifyInTurn<String>(texts))
#ifdef BENCH_QT
        .Add("QByteArray", simplifyInTurn<QByteArray>(texts))
        .Add("QString", simplifyInTurn<QString>(texts))
#endif
        ;
}

void enterEditing() {
    enterReplace("replace_4K", linesOfProse(), "\n", "\r\n");
    enterReplace("replace_word_4K", kProse, "the", "each");
    Comparison("replace_char_4K")
        .Add("ours", [s = String(kProse.c_str())]() mutable { return Opaque(s).ReplaceChar('e', 'o'); })
        .Add("std",
             [s = kProse]() mutable {
                 std::string copy = Opaque(s);
                 std::replace(copy.begin(), copy.end(), 'e', 'o');
                 return copy;
             })
#ifdef BENCH_QT
        .Add("QString",
             [s = QString(kProse.c_str())]() mutable {
                 QString copy = Opaque(s);
                 return copy.replace(QChar('e'), QChar('o'));
             })
#endif
        ;
    enterLower("lower_short", kPathText);
    enterLower("lower_4K", kProse);
    enterSimplify("simplify_short", untidyTexts());
    enterSimplify("simplify_4K",
                  {longText("The installer  asks the Updater\tfor its Status,\n and the answer is kept. ")});
    const std::string padded = "  Korvane Fusewright 1.73 \n";
    Comparison("strip_short")
        .Add("ours", [s = String(padded.c_str())]() mutable { return Opaque(s).StripWhiteSpace(); })
#ifdef BENCH_POCO
        .Add("Poco", [s = padded]() mutable { return Poco::trim(Opaque(s)); })
#endif
#ifdef BENCH_QT
        .Add("QByteArray",
             [s = QByteArray(padded.c_str())]() mutable { return std::as_const(Opaque(s)).trimmed(); })
        .Add("QString",
             [s = QString(padded.c_str())]() mutable { return std::as_const(Opaque(s)).trimmed(); })
#endif
        ;
    Comparison("left_mid")
        .Add("ours",
             [s = String(kPathText.c_str())]() mutable { return Opaque(s).Left(20) + Opaque(s).Mid(36); })
        .Add("std", [s = kPathText]() mutable { return Opaque(s).substr(0, 20) + Opaque(s).substr(36); })
#ifdef BENCH_QT
        .Add("QString",
             [s = QString(kPathText.c_str())]() mutable { return Opaque(s).left(20) + Opaque(s).mid(36); })
#endif
        ;
}

// Splitting and joining

std::vector<std::string> fieldsOf(const std::string& s, char separator) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (std::size_t hit = s.find(separator); hit != s.npos; hit = s.find(separator, start)) {
        fields.push_back(s.substr(start, hit - start));
        start = hit + 1;
    }
    fields.push_back(s.substr(start));
    return fields;
}

std::vector<String> fieldsOf(const String& s, char separator) {
    std::vector<String> fields;
    s.Split(separator, fields);
    return fields;
}

std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i) text += separator;
        text += parts[i];
    }
    return text;
}

/// Returns `count` fields of 4 to 12 bytes, separated by commas.
std::string listText(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += (i ? "," : "") + std::string("name") + std::string(i % 9, static_cast<char>('a' + i % 26));
    return text;
}

void enterSplit(const char* job, const std::string& text) {
    Comparison(job)
        .Add("ours", [s = String(text.c_str())]() mutable { return fieldsOf(Opaque(s), ','); })
        .Add("std", [s = text]() mutable { return fieldsOf(Opaque(s), ','); })
#ifdef BENCH_QT
        .Add("QByteArray", [s = QByteArray(text.c_str())]() mutable { return Opaque(s).split(','); })
        .Add("QString", [s = QString(text.c_str())]() mutable { return Opaque(s).split(QChar(',')); })
#endif
        ;
}

void enterLists() {
    enterSplit("split_10", listText(10));
    enterSplit("split_1000", listText(1000));
    const std::string ten = listText(10), thousand = listText(1000);
    Comparison("join_1000")
        .Add("ours", [l = fieldsOf(String(thousand.c_str()), ','),
                      s = String(", ")]() mutable { return String::Join(Opaque(s), Opaque(l)); })
        .Add("std", [l = fieldsOf(thousand, ','),
                     s = std::string(", ")]() mutable { return joined(Opaque(l), Opaque(s)); })
#ifdef BENCH_FMT
        .Add("fmt",
             [l = fieldsOf(thousand, ','), s = std::string(", ")]() mutable {
                 return fmt::format("{}", fmt::join(Opaque(l), Opaque(s)));
             })
#endif
#ifdef BENCH_QT
        .Add("QString", [l = QString(thousand.c_str()).split(QChar(',')),
                         s = QString(", ")]() mutable { return Opaque(l).join(Opaque(s)); })
#endif
        ;
    Comparison("split_join_10")
        .Add("ours",
             [s = String(ten.c_str()), with = String("/")]() mutable {
                 return String::Join(Opaque(with), fieldsOf(Opaque(s), ','));
             })
        .Add("std", [s = ten, with = std::string(
                                  "/")]() mutable { return joined(fieldsOf(Opaque(s), ','), Opaque(with)); })
#ifdef BENCH_QT
        .Add("QString",
             [s = QString(ten.c_str()), with = QString("/")]() mutable {
                 return Opaque(s).split(QChar(',')).join(Opaque(with));
             })
#endif
        ;
}

[[maybe_unused]] const bool kRegistered = (enterSearching(), enterEditing(), enterLists(), true);

} // namespace
