#pragma once

/// The Finder information of an item, in the byte order of this machine.

#include <MacTypes.h>

enum : UInt16 {
    kIsOnDesk = 0x0001,
    kColor = 0x000E,
    kIsShared = 0x0040,
    kHasNoINITs = 0x0080,
    kHasBeenInited = 0x0100,
    kHasCustomIcon = 0x0400,
    kIsStationery = 0x0800,
    kNameLocked = 0x1000,
    kHasBundle = 0x2000,
    kIsInvisible = 0x4000,
    kIsAlias = 0x8000,
};

#pragma pack(push, 2)
struct FileInfo {
    OSType fileType;
    OSType fileCreator;
    UInt16 finderFlags;
    Point location;
    UInt16 reservedField;
};
struct FolderInfo {
    Rect windowBounds;
    UInt16 finderFlags;
    Point location;
    UInt16 reservedField;
};
#pragma pack(pop)
static_assert(sizeof(FileInfo) == 16 && sizeof(FolderInfo) == 16);
