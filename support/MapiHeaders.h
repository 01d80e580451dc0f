#pragma once

/// The MAPI declarations of the platform, with what they lack today.
///
/// Every file that speaks MAPI includes this header and no MAPI header by itself. The stock headers
/// date from 32-bit days; two things follow:
///   - `Advise` and `Unadvise` of a table, store, session or address book are never called directly.
///     The functions of MapiAdvise.h call them with their true types.
///   - Untyped PR_ names are the 8-bit forms here. Write the `_W` or `_A` name always.
///
/// The functions of MAPI32.dll are linked by ordinal through the import library made from
/// Mapi32.def; the stock import library binds names that 64-bit MAPI32.dll does not export.

#include <windows.h>

#include <mapicode.h>
#include <mapidefs.h>
#include <mapiguid.h>
#include <mapitags.h>
#include <mapiutil.h>
#include <mapix.h>

// Tags and flags newer than the stock headers.
// Source: [MS-OXPROPS], [MS-OXCDATA].

#ifndef PR_SMTP_ADDRESS_W
#define PR_SMTP_ADDRESS_W PROP_TAG(PT_UNICODE, 0x39FE)
#define PR_SMTP_ADDRESS_A PROP_TAG(PT_STRING8, 0x39FE)
#endif
#ifndef PR_ATTACHMENT_CONTACTPHOTO
#define PR_ATTACHMENT_CONTACTPHOTO PROP_TAG(PT_BOOLEAN, 0x7FFF)
#endif
#ifndef PR_RECIPIENT_FLAGS
#define PR_RECIPIENT_FLAGS PROP_TAG(PT_LONG, 0x5FFD)
#endif
#ifndef PR_RECIPIENT_TRACKSTATUS
#define PR_RECIPIENT_TRACKSTATUS PROP_TAG(PT_LONG, 0x5FFF)
#endif
#ifndef PR_INTERNET_CPID
#define PR_INTERNET_CPID PROP_TAG(PT_LONG, 0x3FDE)
#endif
#ifndef PR_MSG_EDITOR_FORMAT
#define PR_MSG_EDITOR_FORMAT PROP_TAG(PT_LONG, 0x5909)
#endif
#ifndef PR_HTML
#define PR_HTML PROP_TAG(PT_BINARY, 0x1013)
#endif
#ifndef PR_BODY_HTML_A
#define PR_BODY_HTML_A PROP_TAG(PT_STRING8, 0x1013)
#define PR_BODY_HTML_W PROP_TAG(PT_UNICODE, 0x1013)
#endif
#ifndef PR_ATTR_HIDDEN
#define PR_ATTR_HIDDEN PROP_TAG(PT_BOOLEAN, 0x10F4)
#endif

#ifndef MDB_ONLINE
#define MDB_ONLINE (static_cast<ULONG>(0x00000100))
#endif
#ifndef MAPI_NO_COINIT
#define MAPI_NO_COINIT 0x00000008
#endif
