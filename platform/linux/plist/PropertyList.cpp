#include <macplatform/PropertyList.h>

#include "PropertyListLimits.h"
#include "PropertyListTree.h"
#include "posix/WholeFile.h"
#include "trace/PlatformCall.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace macplatform {

const PropertyValue* PropertyValue::Find(const std::string& key) const {
    const auto found = std::find(keys.begin(), keys.end(), key);
    return found == keys.end() ? nullptr : &values[static_cast<std::size_t>(found - keys.begin())];
}

const char* PropertyValue::KindName() const {
    static const char* const names[] = {"none", "boolean", "integer", "real",  "string",
                                        "data", "date",    "uid",     "array", "dict"};
    return names[static_cast<std::size_t>(kind)];
}

std::string PropertyValue::Describe() const {
    const bool isArray = kind == Kind::kArray;
    if (kind == Kind::kString) return Quoted(text);
    if (kind == Kind::kData) return '<' + text + '>';
    if (!isArray && kind != Kind::kDictionary) return text;

    const auto& members = isArray ? items : values;
    std::string described = isArray ? "[" : "{";
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (i > 0) described += ", ";
        if (!isArray) described += Quoted(keys[i]) + ": ";
        described += members[i].Describe();
    }
    return described += isArray ? ']' : '}';
}

bool operator==(const PropertyValue& left, const PropertyValue& right) {
    return left.kind == right.kind && left.text == right.text && left.integer == right.integer &&
           left.items == right.items && left.keys == right.keys && left.values == right.values;
}

PropertyListFile ReadPropertyList(const std::string& path) {
    PropertyListFile file;
    std::string bytes;
    file.errorNumber = ReadWholeFile(path, kMaxPropertyListBytes, bytes);
    if (file.errorNumber != 0) {
        file.error = file.errorNumber == EFBIG ? "larger than 64 MiB" : std::strerror(file.errorNumber);
        return file;
    }
    const PropertyListTree tree = ParsePropertyList(bytes, file.error);
    if (!tree) return file;
    file.format = FormatOf(bytes);
    file.root = ValueOf(tree.get());
    return file;
}

} // namespace macplatform
