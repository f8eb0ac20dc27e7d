#pragma once

/// What an FSRef holds, and the items behind it.

#include <Carbon/Files.h>

#include <string>
#include <sys/types.h>

namespace macplatform {

/// An item of this machine, or why there is none.
struct Item {
    OSErr result = noErr;
    std::string path; ///< Absolute and without links.
    bool isFolder = false;
    dev_t device = 0;
    ino_t inode = 0;
};

/// The item at a UTF-8 path of the Mac; a link in last place is followed.
Item FindItem(const std::string& macPath);
/// The item that a reference was made for; fnfErr when it is gone or another took its place.
Item FindItem(const FSRef& reference);

/// Its path alone; the answer is the item's result.
OSErr PathOfReference(const FSRef& reference, std::string& path);

FSRef MakeReference(const Item& item);

/// The path in quotation marks as the Mac names it, for the journal; null is "NULL".
std::string DescribeReference(const FSRef* reference);

} // namespace macplatform
