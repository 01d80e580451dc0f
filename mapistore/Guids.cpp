// The identifiers of the MAPI interfaces, defined once for the library. Users of the static library
// may define them too: the linker takes either.
#include <windows.h>

#define INITGUID
#define USES_IID_IMAPISession
#define USES_IID_IMAPITable
#define USES_IID_IMAPIAdviseSink
#define USES_IID_IProfAdmin
#define USES_IID_IMAPIProp
#define USES_IID_IProfSect
#define USES_IID_IMsgStore
#define USES_IID_IMessage
#define USES_IID_IAttachment
#define USES_IID_IAddrBook
#define USES_IID_IMailUser
#define USES_IID_IMAPIContainer
#define USES_IID_IMAPIFolder
#define USES_IID_IABContainer
#define USES_IID_IDistList
#include <initguid.h>
#include <mapiguid.h>
