#pragma once

/// @file
/// Creates FSRef records, and finds the files and directories that they refer to.

#include <Carbon/Files.h>

#include <string>
#include <sys/types.h>

namespace macplatform {

/// A file or directory of the host, or the reason why it was not found.
struct Item {
    OSErr result = noErr; ///< The reason. If it is not `noErr`, the other members are empty.
    std::string path;     ///< An absolute host path without symbolic links.
    bool isFolder = false;
    dev_t device = 0;
    ino_t inode = 0;
};

/// Returns the item at a UTF-8 path of the Mac. Follows symbolic links, in the last component too.
Item FindItem(const std::string& macPath);
/// Returns the item that the reference was created for. The result is `fnfErr` if that item no longer exists
/// at its path or another item has replaced it, and `errFSBadFSRef` if the reference is not valid.
Item FindItem(const FSRef& reference);

/// Stores the path of the item and returns the result of `FindItem`. After an error, the path is empty.
OSErr PathOfReference(const FSRef& reference, std::string& path);

/// Returns a new reference to an item that `FindItem` has found.
FSRef MakeReference(const Item& item);

/// Returns the Mac path of the reference in quotation marks for the call log, or "NULL" for a null pointer.
std::string DescribeReference(const FSRef* reference);

} // namespace macplatform
