// The one home of the MAPI interface identifiers and property sets of the server: this file defines
// them, every other one only declares them through MapiHeaders.h.

#include <windows.h>

#include <initguid.h>

#define USES_IID_IMAPISession
#define USES_IID_IMAPITable
#define USES_IID_IMAPIAdviseSink
#define USES_IID_IProfAdmin
#define USES_IID_IMAPIProp
#define USES_IID_IMsgStore
#define USES_IID_IMessage
#define USES_IID_IAttachment
#define USES_IID_IAddrBook
#define USES_IID_IMailUser
#define USES_IID_IMAPIContainer
#define USES_IID_IMAPIFolder
#define USES_IID_IABContainer
#define USES_IID_IDistList
#define USES_PS_MAPI
#define USES_PS_PUBLIC_STRINGS

#include <mapiguid.h>
