#pragma once

/// Declares the identifiers and the property list of a test plug-in.

#include <string>

constexpr const char* kPluginType = "5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8";
constexpr const char* kPluginFactory = "A0A0A0A0-0000-4000-8000-000000000001";

/// Returns the property list of a plug-in. `factory` is the name of the factory function.
inline std::string InfoPlist(const std::string& factory, const std::string& type = kPluginType,
                             const std::string& executable = "Test") {
    const auto tag = [](const std::string& name, const std::string& content) {
        return '<' + name + '>' + content + "</" + name + '>';
    };
    const auto entry = [&](const std::string& key, const std::string& value) {
        return tag("key", key) + value;
    };
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" +
           tag("dict",
               entry("CFBundleExecutable", tag("string", executable)) +
                   entry("CFPlugInDynamicRegistration", tag("string", "NO")) +
                   entry("CFPlugInFactories", tag("dict", entry(kPluginFactory, tag("string", factory)))) +
                   entry("CFPlugInTypes",
                         tag("dict", entry(type, tag("array", tag("string", kPluginFactory)))))) +
           "</plist>\n";
}
