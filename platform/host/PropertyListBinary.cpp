#include "PropertyListBinary.h"

#include "PropertyListLimits.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace macplatform {

namespace {

const char tooDeep[] = "it is nested too deeply";
const char damaged[] = "its binary form is damaged";

/// The object table of a binary list, looked at without making anything of it.
class BinaryList {
public:
    explicit BinaryList(const std::string& source) : bytes(source) {}

    /// Of a list that Danger found sound.
    std::string Loss() {
        if (!ReadTrailer()) return damaged;
        for (std::size_t object = 0; object < objectCount; ++object) {
            const auto extent = ExtentOf(object);
            if (extent && extent->kind == set) return "a set";
            if (extent && (extent->kind == asciiText || extent->kind == utf16Text) && !KeepsText(*extent)) {
                return "a text that is cut or damaged";
            }
        }
        return {};
    }

    std::string Danger() {
        if (!ReadTrailer()) return damaged;
        values.assign(objectCount, 0);
        depths.assign(objectCount, 0);
        state.assign(objectCount, Unseen);
        return Walk();
    }

private:
    enum Kind : unsigned { asciiText = 5, utf16Text = 6, array = 0xA, set = 0xC, dictionary = 0xD };
    enum State : unsigned char { Unseen, Open, Done };
    struct Container {
        std::size_t object;
        std::vector<std::size_t> children;
        std::size_t next = 0;
    };

    /// The big-endian number at a place inside the bytes; SIZE_MAX for one that is larger than any size.
    std::size_t Number(std::size_t at, unsigned width) const {
        std::uint64_t value = 0;
        for (std::size_t i = at; i < at + width; ++i)
            value = value << 8 | static_cast<unsigned char>(bytes[i]);
        return value < SIZE_MAX ? static_cast<std::size_t>(value) : SIZE_MAX;
    }

    bool ReadTrailer() {
        if (bytes.size() < 8 + 32) return false;
        const std::size_t trailer = bytes.size() - 32;
        offsetWidth = static_cast<unsigned char>(bytes[trailer + 6]);
        referenceWidth = static_cast<unsigned char>(bytes[trailer + 7]);
        objectCount = Number(trailer + 8, 8);
        root = Number(trailer + 16, 8);
        table = Number(trailer + 24, 8);
        return offsetWidth >= 1 && offsetWidth <= 8 && referenceWidth >= 1 && referenceWidth <= 8 &&
               objectCount >= 1 && objectCount <= maxPropertyListValues && root < objectCount && table >= 8 &&
               table <= trailer && objectCount <= (trailer - table) / offsetWidth;
    }

    /// Where the members of an object begin, and how many there are.
    struct Extent {
        unsigned kind; ///< The upper half of the marker.
        std::size_t first, count;
    };

    /// Nothing when the object, or for one with a count the count, does not lie before the offset table.
    std::optional<Extent> ExtentOf(std::size_t object) const {
        const std::size_t at = Number(table + object * offsetWidth, offsetWidth);
        if (at < 8 || at >= table) return std::nullopt;
        Extent extent = {static_cast<unsigned>(Number(at, 1)) >> 4, at + 1, Number(at, 1) & 0x0F};
        if (extent.kind < 4 || extent.kind == 8 || extent.count != 0x0F) return extent;
        if (extent.first >= table || Number(extent.first, 1) >> 4 != 1) return std::nullopt;
        const unsigned shift = static_cast<unsigned>(Number(extent.first, 1)) & 0x0F;
        if (shift > 3 || extent.first + 1 + (1U << shift) > table) return std::nullopt;
        extent.count = Number(extent.first + 1, 1U << shift);
        extent.first += 1 + (1U << shift);
        return extent;
    }

    /// The references of an array, set or dictionary; none for a scalar; nothing when they lie outside.
    std::optional<std::vector<std::size_t>> Children(std::size_t object) const {
        const auto extent = ExtentOf(object);
        if (!extent) return std::nullopt;
        const unsigned kind = extent->kind;
        if (kind != array && kind != set && kind != dictionary) return std::vector<std::size_t>();
        const unsigned references = kind == dictionary ? 2 : 1;
        if (extent->count > (table - extent->first) / referenceWidth / references) return std::nullopt;
        std::vector<std::size_t> children(extent->count * references);
        for (std::size_t i = 0; i < children.size(); ++i) {
            children[i] = Number(extent->first + i * referenceWidth, referenceWidth);
            if (children[i] >= objectCount) return std::nullopt;
            if (kind == dictionary && i < extent->count && !IsKey(children[i])) return std::nullopt;
        }
        return children;
    }

    /// Whether the object is a text that is kept whole: the parser ends the process over another key.
    bool IsKey(std::size_t object) const {
        const auto extent = ExtentOf(object);
        return extent && (extent->kind == asciiText || extent->kind == utf16Text) && KeepsText(*extent);
    }

    /// Whether the parser keeps every character of a text.
    bool KeepsText(const Extent& text) const {
        const unsigned width = text.kind == utf16Text ? 2 : 1;
        if (text.count > (table - text.first) / width) return false;
        bool isHigh = false;
        for (std::size_t i = 0; i < text.count; ++i) {
            const std::size_t unit = Number(text.first + i * width, width);
            const bool isLow = (unit & 0xFC00) == 0xDC00;
            if (unit == 0 || isLow != isHigh || (width == 1 && unit >= 0x80)) return false;
            isHigh = (unit & 0xFC00) == 0xD800;
        }
        return !isHigh;
    }

    /// Enters an object: a container goes onto the stack, a scalar is done at once. False when it is damaged.
    bool Enter(std::size_t object) {
        auto children = Children(object);
        if (!children) return false;
        state[object] = Open;
        stack.push_back({object, std::move(*children)});
        return true;
    }

    /// Depth first, each object once; what comes out of a shared one counts each time it is referred to.
    std::string Walk() {
        if (!Enter(root)) return damaged;
        while (!stack.empty()) {
            Container& top = stack.back();
            if (top.next == top.children.size()) {
                Leave();
                if (depths[root] > maxPropertyListDepth || stack.size() > maxPropertyListDepth)
                    return tooDeep;
                continue;
            }
            const std::size_t child = top.children[top.next];
            if (state[child] == Open) return "an object in it holds itself";
            if (state[child] == Unseen) {
                if (stack.size() > maxPropertyListDepth) return tooDeep;
                if (!Enter(child)) return damaged;
                continue;
            }
            ++top.next;
            if ((values[top.object] += values[child]) > maxPropertyListValues)
                return "it holds too many values";
            depths[top.object] = std::max(depths[top.object], depths[child]);
        }
        return depths[root] > maxPropertyListDepth ? tooDeep : std::string();
    }

    void Leave() {
        const Container& top = stack.back();
        state[top.object] = Done;
        ++values[top.object];
        if (!top.children.empty()) ++depths[top.object];
        stack.pop_back();
    }

    const std::string& bytes;
    unsigned offsetWidth = 0, referenceWidth = 0;
    std::size_t objectCount = 0, root = 0, table = 0;
    std::vector<std::size_t> values; ///< That come out of each object, itself included.
    std::vector<unsigned> depths;
    std::vector<State> state;
    std::vector<Container> stack;
};

} // namespace

std::string BinaryListDanger(const std::string& bytes) { return BinaryList(bytes).Danger(); }

std::string BinaryListLoss(const std::string& bytes) { return BinaryList(bytes).Loss(); }

} // namespace macplatform
