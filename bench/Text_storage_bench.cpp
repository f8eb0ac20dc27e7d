// Texts made, copied, joined, compared and sorted.

#include "Contest.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>

#ifdef BENCH_QT
#include <QStringBuilder>
#endif

namespace {

using contest::AllTexts;
using contest::Contest;
using contest::opaque;

constexpr std::array<const char*, 8> shortTexts = {"Fusewright", "take 01.wav", "Icon.icns", "readme.txt",
                                                   "plug-in id", "en-GB.lproj", "Resources", "1.73.0.2114"};
constexpr std::array<const char*, 8> longTexts = {
    "/Library/Application Support/Korvane/Updater",
    "/Library/Preferences/com.korvane.updater.plist",
    "/Applications/Korvane/Fusewright.app/Contents/MacOS/Fusewright",
    "Attempt to read 4096 bytes, only read 17 bytes",
    "/Users/someone/Music/Sessions 2011/Mixdown/take 04 (bounced).wav",
    "The installation cannot go on, because the disk is full",
    "InstalledProducts/Fusewright/CurrentVersion",
    "/System/Library/Frameworks/Carbon.framework/Versions/A/Resources",
};
constexpr char folderText[] = "/Library/Application Support/Korvane";
constexpr char otherFolderText[] = "/Library/Application Support/Korvand";
constexpr char fileText[] = "install_status.txt";

/// One of the eight texts made anew at every call.
template <typename Make>
auto inTurn(const std::array<const char*, 8>& texts, Make make) {
    return [&texts, make, i = 0u]() mutable { return make(texts[i++ % 8]); };
}

void enterNew(const char* job, const std::array<const char*, 8>& texts) {
    Contest(job)
        .byEach(
            AllTexts(),
            [&texts](auto empty) { return inTurn(texts, [](const char* s) { return decltype(empty)(s); }); })
        .by("make_shared", inTurn(texts, [](const char* s) { return std::make_shared<std::string>(s); }));
}

void enterCopies() {
    Contest("copy")
        .byEach(AllTexts(),
                [](auto empty) {
                    using Text = decltype(empty);
                    return [source = Text(folderText)]() mutable { return Text(opaque(source)); };
                })
        .by("shared_ptr", [source = std::make_shared<std::string>(folderText)]() mutable {
            return std::shared_ptr<std::string>(opaque(source));
        });
    const auto copyList = [](auto item) {
        using List = std::vector<decltype(item)>;
        return [list = List(1024, item)]() mutable { return List(opaque(list)); };
    };
    Contest("copy_vector_1024")
        .byEach(AllTexts(), [copyList](auto empty) { return copyList(decltype(empty)(folderText)); })
        .by("shared_ptr", copyList(std::make_shared<std::string>(folderText)));
}

void enterAppends() {
    Contest("append_char_x1000").byEach(AllTexts(), [](auto empty) {
        return [empty] {
            auto text = empty;
            for (int i = 0; i < 1000; ++i) text += static_cast<char>('a' + i % 16);
            return text;
        };
    });
    Contest("append_text_x100").byEach(AllTexts(), [](auto empty) {
        return [empty, piece = decltype(empty)("twelve bytes")]() mutable {
            auto text = empty;
            for (int i = 0; i < 100; ++i) text += opaque(piece);
            return text;
        };
    });
    Contest job("concat_3");
    job.byEach(AllTexts(), [](auto empty) {
        using Text = decltype(empty);
        return [folder = Text(folderText), file = Text(fileText)]() mutable {
            return Text(opaque(folder) + "/" + opaque(file));
        };
    });
#ifdef BENCH_QT
    job.by("QStringBuilder", [folder = QString(folderText), file = QString(fileText)]() mutable {
        return QString(opaque(folder) % QLatin1Char('/') % opaque(file));
    });
#endif
}

void enterComparisons() {
    const auto onPair = [](auto compare) {
        return [compare](auto empty) {
            using Text = decltype(empty);
            return [compare, a = Text(folderText), b = Text(otherFolderText)]() mutable {
                return compare(opaque(a), opaque(b));
            };
        };
    };
    Contest("equal").byEach(AllTexts(), onPair([](const auto& a, const auto& b) { return a == b; }));
    Contest("less").byEach(AllTexts(), onPair([](const auto& a, const auto& b) { return a < b; }));
}

/// 100,000 texts: names that differ at their end, or letters that differ at once.
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
    Contest(job, 1e6) // so that the table tells milliseconds
        .byEach(AllTexts(), [&texts](auto empty) {
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
    Contest("default_x16").byEach(AllTexts(), [](auto empty) {
        return [] { return std::array<decltype(empty), 16>(); };
    });
    enterNew("new_short", shortTexts);
    enterNew("new_long", longTexts);
    enterCopies();
    enterAppends();
    enterComparisons();
    enterSorting("sort_100k_names", true);
    enterSorting("sort_100k_free", false);
}

[[maybe_unused]] const bool entered = (enterAll(), true);

} // namespace
