#pragma once

/// @file
/// Declares functions that apply the loader's tables of an image: rebases, binds and exports. Every function
/// throws UnsupportedMachO if a table is damaged or has an unsupported operation.

#include "ImageMemory.h"

#include <functional>
#include <optional>

namespace macplatform {

/// Adds the slide to every pointer that the table of rebases lists.
void Rebase(const ImageFile& file, ImageMemory& memory);

/// Stores the addresses of imports in the pointers that `table` lists. `table` is one of the two tables of
/// binds. `find` returns the address of an import by its name in the file.
void Bind(const ImageFile& file, std::string_view table, ImageMemory& memory,
          const std::function<std::uint32_t(const std::string& name)>& find);

/// Returns the address of an export in the address range of the file. `name` is the name in the file. Returns
/// no value if there is no such export.
std::optional<std::uint32_t> FindExport(const ImageFile& file, const std::string& name);

} // namespace macplatform
