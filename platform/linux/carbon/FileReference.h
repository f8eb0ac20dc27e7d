#pragma once

/// @file
/// Declares functions that create FSRef records, and functions that find the files and directories to which
/// the records refer.

#include <Carbon/Files.h>

#include <string>
#include <sys/types.h>

namespace macplatform {

/// The result of a search: a file or directory of this machine, or the reason why it was not found.
struct Item {
    OSErr result = noErr; ///< If not `noErr`: the reason. The other members are then empty.
    std::string path;     ///< An absolute path of this machine without symbolic links.
    bool isFolder = false;
    dev_t device = 0;
    ino_t inode = 0;
};

/// Returns the item at a UTF-8 path of the Mac. Follows symbolic links, also at the end of the path.
Item FindItem(const std::string& macPath);
/// Returns the item that the reference was created for. The result is `fnfErr` if that item no longer exists
/// at its path or another item has replaced it, and `errFSBadFSRef` if the reference is not valid.
Item FindItem(const FSRef& reference);

/// Finds the item of the reference and stores its path of this machine in `path`. Returns the result code of
/// `FindItem`. After an error, `path` is empty.
OSErr PathOfReference(const FSRef& reference, std::string& path);

/// Returns a new reference to an item that `FindItem` has found.
FSRef MakeReference(const Item& item);

/// Returns the text for the call log: the Mac path of the reference in quotation marks, or "NULL" for a null
/// pointer.
std::string DescribeReference(const FSRef* reference);

} // namespace macplatform
