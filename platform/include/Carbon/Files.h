#pragma once

/// The File Manager: references to items and their catalogue information.

#include <MacTypes.h>

/// A reference to an existing item by path and identity. After the item was renamed, removed or replaced by
/// another item, functions return fnfErr for the reference. A reference is valid only in the process that
/// created it, and only for the last 4096 items. Functions return errFSBadFSRef for any other reference.
struct FSRef {
    UInt8 hidden[80];
};

using FSCatalogInfoBitmap = UInt32;
enum : FSCatalogInfoBitmap {
    kFSCatInfoNone = 0,
    kFSCatInfoNodeFlags = 0x00000002,
    kFSCatInfoFinderInfo = 0x00000800,
};
enum : UInt16 { kFSNodeIsDirectoryMask = 0x0010 };

#pragma pack(push, 2)
struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
};
struct FSSpec {
    SInt16 vRefNum;
    SInt32 parID;
    unsigned char name[64];
};
struct UTCDateTime {
    UInt16 highSeconds;
    UInt32 lowSeconds;
    UInt16 fraction;
};
struct FSCatalogInfo {
    UInt16 nodeFlags;
    SInt16 volume;
    UInt32 parentDirID;
    UInt32 nodeID;
    UInt8 sharingFlags;
    UInt8 userPrivileges;
    UInt8 reserved1;
    UInt8 reserved2;
    UTCDateTime createDate;
    UTCDateTime contentModDate;
    UTCDateTime attributeModDate;
    UTCDateTime accessDate;
    UTCDateTime backupDate;
    UInt32 permissions[4];
    UInt8 finderInfo[16];
    UInt8 extFinderInfo[16];
    UInt64 dataLogicalSize;
    UInt64 dataPhysicalSize;
    UInt64 rsrcLogicalSize;
    UInt64 rsrcPhysicalSize;
    UInt32 valence;
    UInt32 textEncodingHint;
};
#pragma pack(pop)
static_assert(sizeof(FSRef) == 80 && sizeof(FSSpec) == 70 && sizeof(UTCDateTime) == 8);
static_assert(sizeof(FSCatalogInfo) == 144);

MACPLATFORM_C_BEGIN

/// Creates a reference to the item at a UTF-8 path. Follows a symbolic link at the end of the path.
/// `isDirectory` may be null.
OSStatus FSPathMakeRef(const UInt8* path, FSRef*, Boolean* isDirectory);
/// Writes the fields that the bitmap selects. This layer supports the node flags and the Finder information,
/// and returns errFSBadInfoBitmap for other bits. `name`, `spec` and `parent` are not supported: the result
/// is paramErr unless all three are null.
OSErr FSGetCatalogInfo(const FSRef*, FSCatalogInfoBitmap, FSCatalogInfo*, HFSUniStr255* name, FSSpec* spec,
                       FSRef* parent);
/// Writes the first sixteen bytes of the item's Finder information. Returns errFSBadInfoBitmap for other bits
/// of the bitmap. Writes nothing if the item already has the same bytes.
OSErr FSSetCatalogInfo(const FSRef*, FSCatalogInfoBitmap, const FSCatalogInfo*);
/// Returns errFSOperationNotSupported. Newer volumes of the Mac do not support the function either.
OSErr FSExchangeObjects(const FSRef*, const FSRef*);

MACPLATFORM_C_END
