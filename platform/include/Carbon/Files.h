#pragma once

/// The File Manager: references to items and their catalogue information.

#include <MacTypes.h>

/// An existing item, by its path and its identity: fnfErr once it was renamed or removed, also when another
/// item took its place. Good in this process only, where the last 4096 items stay known; errFSBadFSRef else.
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

/// The item at a UTF-8 path; a link in last place is followed. `isDirectory` may be null.
OSStatus FSPathMakeRef(const UInt8* path, FSRef*, Boolean* isDirectory);
/// Fills what the bitmap asks for: node flags and Finder information here, errFSBadInfoBitmap for more.
/// `name`, `spec` and `parent` are not answered here and must be null (paramErr).
OSErr FSGetCatalogInfo(const FSRef*, FSCatalogInfoBitmap, FSCatalogInfo*, HFSUniStr255* name, FSSpec* spec,
                       FSRef* parent);
/// Writes the first sixteen bytes of the Finder information and nothing else of the item; errFSBadInfoBitmap
/// for anything else. Nothing is written when the item has them already.
OSErr FSSetCatalogInfo(const FSRef*, FSCatalogInfoBitmap, const FSCatalogInfo*);
/// Not supported by the volumes of this layer (errFSOperationNotSupported), as on the Mac's newer ones.
OSErr FSExchangeObjects(const FSRef*, const FSRef*);

MACPLATFORM_C_END
