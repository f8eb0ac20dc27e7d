#pragma once

/// The loader's tables of an image: pointers to move, pointers to bind, and exports.

#include "ImageMemory.h"

#include <functional>
#include <optional>

namespace macplatform {

/// Adds the slide to every pointer that the table names.
void Rebase(const ImageFile& file, ImageMemory& memory);

/// Fills the pointers that one of the two tables of binds names. `find` answers the address of an import,
/// named as in the file.
void Bind(const ImageFile& file, std::string_view table, ImageMemory& memory,
          const std::function<std::uint32_t(const std::string& name)>& find);

/// The address of an export, named as in the file.
std::optional<std::uint32_t> FindExport(const ImageFile& file, const std::string& name);

} // namespace macplatform
