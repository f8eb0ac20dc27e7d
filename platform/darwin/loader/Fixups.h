#pragma once

/// @file
/// Applies the loader's tables of an image: rebases, binds and exports. Every function throws MachORefused if
/// a table is damaged or has an unsupported operation.

#include "ImageMemory.h"

#include <functional>
#include <optional>

namespace macplatform {

/// Adds the slide to every pointer in the table of rebases.
void Rebase(const ImageFile& file, ImageMemory& memory);

/// Fills the pointers in one of the two tables of binds. `find` returns the address of an import by its name
/// in the file.
void Bind(const ImageFile& file, std::string_view table, ImageMemory& memory,
          const std::function<std::uint32_t(const std::string& name)>& find);

/// Returns the address in the file of an export by its name in the file,
/// or no value if there is no such export.
std::optional<std::uint32_t> FindExport(const ImageFile& file, const std::string& name);

} // namespace macplatform
