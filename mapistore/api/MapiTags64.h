#pragma once

#include "Mapi64.h"

/// Tags and flags that the mingw MAPI headers lack.
///
/// Source: [MS-OXPROPS] for the properties, the Windows MAPI reference for the flags.
namespace mapistore
{

inline constexpr ULONG kTagHtmlBinary = PROP_TAG(PT_BINARY, 0x1013);
inline constexpr ULONG kIdHtml = 0x1013;
inline constexpr ULONG kTagSmtpAddressW = PROP_TAG(PT_UNICODE, 0x39FE);
inline constexpr ULONG kTagAttachContactPhoto = PROP_TAG(PT_BOOLEAN, 0x7FFF);
inline constexpr ULONG kTagRecipientFlags = PROP_TAG(PT_LONG, 0x5FFD);
inline constexpr ULONG kTagRecipientTrackStatus = PROP_TAG(PT_LONG, 0x5FFF);
inline constexpr ULONG kTagInternetCodePage = PROP_TAG(PT_LONG, 0x3FDE);
inline constexpr ULONG kTagEditorFormat = PROP_TAG(PT_LONG, 0x5909);
inline constexpr ULONG kTagAttrHidden = PROP_TAG(PT_BOOLEAN, 0x10F4);
inline constexpr ULONG kTagContainerClassW = PROP_TAG(PT_UNICODE, 0x3613);
inline constexpr ULONG kTagChangeKey = PROP_TAG(PT_BINARY, 0x65E2);

inline constexpr ULONG kMdbOnline = 0x00000100;
inline constexpr ULONG kMapiNoCoInit = 0x00000008;
inline constexpr ULONG kMapiNoCache = 0x00000200;
inline constexpr ULONG kMapiCacheOnly = 0x00004000;
inline constexpr ULONG kAbUnicodeUi = 0x00000008;

inline constexpr ULONG kMaxRows = 0x7FFFFFFF;

} // namespace mapistore
