// Benchmarks of strings: creating, copying, joining, comparing and sorting.

#include "Comparison.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>

#ifdef BENCH_QT
#include <QStringBuilder>
#endif

namespace {

using comparison::AllTexts;
using comparison::Comparison;
using comparison::Opaque;

constexpr std::array<const char*, 8> kShortTexts = {"Fusewright", "take 01.wav", "Icon.icns", "readme.txt",
                                                    "plug-in id", "en-GB.lproj", "Resources", "1.73.0.2114"};
constexpr std::array<const char*, 8> kLongTexts = {
    "/Library/Application Support/Korvane/Updater",
    "/Library/Preferences/com.korvane.updater.plist",
    "/Applications/Korvane/Fusewright.app/Contents/MacOS/Fusewright",
    "Attempt to read 4096 bytes, only read 17 bytes",
    "/Users/someone/Music/Sessions 2011/Mixdown/take 04 (bounced).wav",
    "The installation cannot go on, because the disk is full",
    "InstalledProducts/Fusewright/CurrentVersion",
    "/System/Library/Frameworks/Carbon.framework/Versions/A/Resources",
};
constexpr char kFolderText[] = "/Library/Application Support/Korvane";
constexpr char kOtherFolderText[] = "/Library/Application Support/Korvand";
constexpr char kFileText[] = "install_status.txt";

/// Returns a function that creates a string from the next of eight texts at each call.
template <typename Make>
auto inTurn(const std::array<const char*, 8>& texts, Make make) {
    return [&texts, make, i = 0u]() mutable { return make(texts[i++ % 8]); };
}

void enterNew(const char* job, const std::array<const char*, 8>& texts) {
    Comparison(job)
        .AddEach(
            AllTexts(),
            [&texts](auto empty) { return inTurn(texts, [](const char* s) { return decltype(empty)(s); }); })
        .Add("make_shared", inTurn(texts, [](const char* s) { return std::make_shared<std::string>(s); }));
}

void enterCopies() {
    Comparison("copy")
        .AddEach(AllTexts(),
                 [](auto empty) {
                     using Text = decltype(empty);
                     return [source = Text(kFolderText)]() mutable { return Text(Opaque(source)); };
                 })
        .Add("shared_ptr", [source = std::make_shared<std::string>(kFolderText)]() mutable {
            return std::shared_ptr<std::string>(Opaque(source));
        });
    const auto copyList = [](auto item) {
        using List = std::vector<decltype(item)>;
        return [list = List(1024, item)]() mutable { return List(Opaque(list)); };
    };
    Comparison("copy_vector_1024")
        .AddEach(AllTexts(), [copyList](auto empty) { return copyList(decltype(empty)(kFolderText)); })
        .Add("shared_ptr", copyList(std::make_shared<std::string>(kFolderText)));
}

void enterAppends() {
    Comparison("append_char_x1000").AddEach(AllTexts(), [](auto empty) {
        return [empty] {
            auto text = empty;
            for (int i = 0; i < 1000; ++i) text += static_cast<char>('a' + i % 16);
            return text;
        };
    });
    Comparison("append_text_x100").AddEach(AllTexts(), [](auto empty) {
        return [empty, piece = decltype(empty)("twelve bytes")]() mutable {
            auto text = empty;
            for (int i = 0; i < 100; ++i) text += Opaque(piece);
            return text;
        };
    });
    Comparison job("concat_3");
    job.AddEach(AllTexts(), [](auto empty) {
        using Text = decltype(empty);
        return [folder = Text(kFolderText), file = Text(kFileText)]() mutable {
            return Text(Opaque(folder) + "/" + Opaque(file));
        };
    });
#ifdef BENCH_QT
    job.Add("QStringBuilder", [folder = QString(kFolderText), file = QString(kFileText)]() mutable {
        return QString(Opaque(folder) % QLatin1Char('/') % Opaque(file));
    });
#endif
}

void enterComparisons() {
    const auto onPair = [](auto compare) {
        return [compare](auto empty) {
            using Text = decltype(empty);
            return [compare, a = Text(kFolderText), b = Text(kOtherFolderText)]() mutable {
                return compare(Opaque(a), Opaque(b));
            };
        };
    };
    Comparison("equal").AddEach(AllTexts(), onPair([](const auto& a, const auto& b) { return a == b; }));
    Comparison("less").AddEach(AllTexts(), onPair([](const auto& a, const auto& b) { return a < b; }));
}

/// Returns 100,000 strings: names that differ only near their ends, or random letters.
std::vector<std::string> manyTexts(bool names) {
    std::mt19937 random(7);
    std::vector<std::string> texts(100000);
    for (std::string& text : texts) {
        if (names) text = "take " + std::to_string(random() % 1000000) + " (mix).wav";
        while (!names && text.size() < 20) text += static_cast<char>('a' + random() % 26);
    }
    return texts;
}

void enterSorting(const char* job, bool names) {
    const std::vector<std::string> texts = manyTexts(names);
    Comparison(job, 1e6) // With this number of items, the nanoseconds per item are the milliseconds per run.
        .AddEach(AllTexts(), [&texts](auto empty) {
            std::vector<decltype(empty)> list;
            for (const std::string& text : texts) list.push_back(decltype(empty)(text.c_str()));
            return [list] {
                auto copy = list;
                std::sort(copy.begin(), copy.end());
                return copy;
            };
        });
}

void enterAll() {
    Comparison("default_x16").AddEach(AllTexts(), [](auto empty) {
        return [] { return std::array<decltype(empty), 16>(); };
    });
    enterNew("new_short", kShortTexts);
    enterNew("new_long", kLongTexts);
    enterCopies();
    enterAppends();
    enterComparisons();
    enterSorting("sort_100k_names", true);
    enterSorting("sort_100k_free", false);
}

[[maybe_unused]] const bool kRegistered = (enterAll(), true);

} // namespace
