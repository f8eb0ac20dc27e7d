#include "Changes.h"

#include "DisplayText.h"

#include <utility>

namespace xcodhost {

namespace {

using macplatform::PropertyValue;
using Values = std::map<std::string, PropertyValue>;

/// Calls `visit(key, before, after)` for each key of the two maps in order. A pointer is null if its map does
/// not have the key.
template <typename Map, typename Visit>
void forEachPair(Map& before, Map& after, Visit visit) {
    auto left = before.begin();
    auto right = after.begin();
    while (left != before.end() || right != after.end()) {
        const bool hasLeft = right == after.end() || (left != before.end() && left->first <= right->first);
        const bool hasRight = left == before.end() || (right != after.end() && right->first <= left->first);
        const std::string& key = hasLeft ? left->first : right->first;
        visit(key, hasLeft ? &left->second : nullptr, hasRight ? &right->second : nullptr);
        if (hasLeft) ++left;
        if (hasRight) ++right;
    }
}

/// Appends the keys that differ. Appends nothing if one of the files could not be read.
void compareKeys(const std::string& domain, PreferencesFile* before, PreferencesFile* after,
                 Changes& changes) {
    if ((before && !before->problem.empty()) || (after && !after->problem.empty())) return;
    Values none;
    forEachPair(before ? before->values : none, after ? after->values : none,
                [&](const std::string& key, PropertyValue* old, PropertyValue* now) {
                    if (old && now && *old == *now) return;
                    PreferenceChange change{domain, key, std::nullopt, std::nullopt};
                    if (old) change.before = std::move(*old);
                    if (now) change.after = std::move(*now);
                    changes.preferences.push_back(std::move(change));
                });
}

void compareFlags(const std::string& path, std::uint16_t before, std::uint16_t after, Changes& changes) {
    for (const FinderFlagName& flag : kFinderFlagNames) {
        const int old = (before & flag.mask) >> flag.shift;
        const int now = (after & flag.mask) >> flag.shift;
        if (old == now) continue;
        const bool isBit = flag.shift == 0;
        changes.finderFlags.push_back({path, flag, isBit ? old != 0 : old, isBit ? now != 0 : now});
    }
}

std::string modeText(mode_t mode) {
    std::string text;
    for (int place = 9; place >= 0; place -= 3) text += static_cast<char>('0' + (mode >> place & 7));
    return text;
}

bool isSidecar(const std::string& path) { return path.compare(path.rfind('/') + 1, 2, "._") == 0; }

bool hasSameContents(const VolumeItem& before, const VolumeItem& after) {
    return S_ISDIR(before.mode) || (before.size == after.size && before.modified == after.modified &&
                                    before.inode == after.inode && before.device == after.device);
}

/// Returns the kind of the item and the change: "folder created", "removed".
std::string comingOrGoing(const VolumeItem& item, const std::string& what) {
    return (S_ISDIR(item.mode) ? "folder " : S_ISLNK(item.mode) ? "link " : "") + what;
}

/// Returns the first reported difference, or an empty string.
std::string differenceOf(const VolumeItem& before, const VolumeItem& after) {
    if ((before.mode & S_IFMT) != (after.mode & S_IFMT)) return "replaced by an item of another kind";
    if (before.linkTarget != after.linkTarget) return "link target changed";
    if (!hasSameContents(before, after)) return "contents changed";
    if (before.mode != after.mode) return "mode " + modeText(before.mode) + " -> " + modeText(after.mode);
    return {};
}

std::string differenceOf(const VolumeItem* before, const VolumeItem* after) {
    if (before && after) return differenceOf(*before, *after);
    if (after) return comingOrGoing(*after, "created");
    return before ? comingOrGoing(*before, "removed") : "";
}

} // namespace

Changes Compare(VolumeState&& before, VolumeState&& after) {
    Changes changes;
    forEachPair(before.preferences, after.preferences,
                [&](const std::string& domain, PreferencesFile* old, PreferencesFile* now) {
                    compareKeys(domain, old, now, changes);
                });
    forEachPair(before.items, after.items, [&](const std::string& path, VolumeItem* old, VolumeItem* now) {
        compareFlags(path, old ? old->finderFlags : std::uint16_t{0},
                     now ? now->finderFlags : std::uint16_t{0}, changes);
        if (IsPreferencesPath(path) || isSidecar(path)) return;
        std::string difference = differenceOf(old, now);
        if (!difference.empty()) changes.files.push_back({path, std::move(difference)});
    });
    return changes;
}

bool IsUntouched(const VolumeState& before, const VolumeState& after, const std::string& path) {
    const auto old = before.items.find(path);
    const auto now = after.items.find(path);
    return old != before.items.end() && now != after.items.end() && hasSameContents(old->second, now->second);
}

std::string Describe(const std::optional<PropertyValue>& value) {
    if (!value) return "(none)";
    constexpr std::size_t longest = 400;
    std::string text = value->Describe();
    if (text.size() > longest) {
        const std::string size = std::to_string(text.size());
        std::size_t end = longest; // moves to the start of a character
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
        text = text.substr(0, end) + "... (" + size + " bytes)";
    }
    return std::string("(") + value->KindName() + ") " + Printable(text);
}

std::string Describe(const FinderFlagName& flag) {
    return std::string(1, flag.letter) + ' ' + flag.name + " (" + Hex(flag.mask, 4) + ')';
}

std::string DescribeSetting(const FinderFlagName& flag, int setting) {
    if (flag.shift != 0) return std::to_string(setting);
    return setting != 0 ? "on" : "off";
}

} // namespace xcodhost
