// Cleans, splits and compares paths. The results must equal those of a second implementation that works on a
// list of the names in a path.

#include "Property.h"
#include "Text.h"

#include <Kelbase/common/common_path.h>

#include <algorithm>
#include <vector>

namespace {

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> names(1);
    for (const char c : text) {
        if (c == '/') {
            names.emplace_back();
        } else {
            names.back() += c;
        }
    }
    return names;
}

/// Replaces each run of separators by one separator, but a run at the start by two.
std::string collapsed(const std::string& text) {
    std::string kept;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isDoubled = text[i] == '/' && i > 0 && text[i - 1] == '/';
        if (!isDoubled || i == 1) kept += text[i];
    }
    return kept;
}

std::string cleaned(std::string text) {
    std::replace(text.begin(), text.end(), '\\', '/');
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    if (text.empty() || text == "/") return text;
    std::vector<std::string> names = split(collapsed(text));
    for (std::size_t i = 0; i < names.size();) {
        if (i > 0 && BeforeNul(names[i]) == "..") {
            names.erase(names.begin() + static_cast<std::ptrdiff_t>(i) - 1,
                        names.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        } else {
            ++i;
        }
    }
    std::string joined;
    for (std::size_t i = 0; i < names.size(); ++i) joined += (i > 0 ? "/" : "") + names[i];
    return joined;
}

std::string canonicalOf(const std::string& text) {
    std::string canonical = cleaned(text) + "/";
    while (canonical.size() >= 2 && canonical.substr(canonical.size() - 2) == "//") canonical.pop_back();
    return canonical;
}

std::string keyOf(const std::string& text) {
    std::string key(BeforeNul(canonicalOf(text)));
    for (char& c : key) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return key;
}

std::string withoutTrailing(std::string text) {
    while (!text.empty() && (text.back() == '/' || text.back() == '\\')) text.pop_back();
    return text;
}

std::string lastName(const std::string& text) {
    const std::string stem = withoutTrailing(text);
    const std::size_t place = stem.find_last_of("/\\");
    if (place != stem.npos) return stem.substr(place + 1);
    return stem.size() >= 2 && stem[1] == ':' ? stem.substr(2) : stem;
}

std::string folderOf(const std::string& text) {
    const std::string stem = withoutTrailing(text);
    const std::size_t place = stem.find_last_of("/\\");
    if (place == stem.npos) return stem.size() >= 2 && stem[1] == ':' ? stem.substr(0, 2) + "/" : ".";
    if (place == 0) return "/";
    return place == 2 && stem[1] == ':' ? stem.substr(0, 3) : stem.substr(0, place);
}

void checkOne(const std::string& text) {
    const FilePath file(TextOf(text), false);
    const FolderPath folder(TextOf(text), false);
    const std::string internal = BytesOf(file.GetInternal());
    if (file.IsEmpty()) {
        Require(folder.IsEmpty(), "an empty file path is an empty folder path");
        return;
    }
    if (!text.empty() && (text[0] == '/' || text[0] == '\\'))
        RequireEqual(internal, text, "an absolute path does not change");
    Require(internal.size() >= text.size() || text[0] == '~', "making a path absolute keeps its text");

    const std::string clean = canonicalOf(internal);
    RequireEqual(BytesOf(file.ToString()), clean.substr(0, clean.size() - 1),
                 "ToString returns the clean file path");
    RequireEqual(BytesOf(folder.ToString()), canonicalOf(BytesOf(folder.GetInternal())),
                 "ToString returns the clean folder path");

    const std::string name = lastName(internal);
    const std::size_t dot = name.rfind('.');
    RequireEqual(BytesOf(file.GetFilename()), name, "GetFilename returns the last name");
    RequireEqual(BytesOf(file.GetExtension()), dot == name.npos ? "" : name.substr(dot + 1),
                 "GetExtension returns the extension");
    RequireEqual(BytesOf(file.GetBaseName()), name.substr(0, dot), "GetBaseName returns the base name");
    const FolderPath expectedFolder(TextOf(folderOf(internal)), false);
    RequireEqual(BytesOf(file.GetFolder().GetInternal()), BytesOf(expectedFolder.GetInternal()),
                 "GetFolder returns the folder");

    const bool isTop = clean == "/" || BeforeNul(clean) == "./";
    if (folder.IsTopLevel()) {
        Require(folder.GetParent().IsEmpty(), "a top-level folder has no parent");
    } else if (!isTop) {
        RequireEqual(BytesOf(folder.GetFolderName()), lastName(BytesOf(folder.GetInternal())),
                     "GetFolderName returns the last name");
    }
}

void checkOrder(const std::string& left, const std::string& right) {
    const FilePath a(TextOf(left), false), b(TextOf(right), false);
    const int order = keyOf(BytesOf(a.GetInternal())).compare(keyOf(BytesOf(b.GetInternal())));
    Require((a == b) == (order == 0), "paths are equal exactly if their keys are");
    Require((a < b) == (order < 0) && (b < a) == (order > 0), "paths have the order of their keys");
    Require((a <= b) == (order <= 0), "<= has the order of the keys");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(Bytes(data, size));
    const std::size_t line = bytes.find('\n');
    const std::string left = bytes.substr(0, line);
    checkOne(left);
    if (line != bytes.npos) checkOrder(left, bytes.substr(line + 1));
    return 0;
}
