#pragma once

#include <windows.h>

#include <mapix.h>
// mapiutil.h and mapix.h do not stand alone under mingw; windows.h has to come first.
#include <mapiutil.h>

#include <cstdint>

/// The MAPI interfaces as 64-bit MAPI really has them.
///
/// The mingw headers date from 32-bit days: they give the number of an advise connection and the
/// window parameter 32 bits, where 64-bit MAPI writes and takes eight bytes. The order of the
/// virtual functions is right, so a `reinterpret_cast` between the two declarations of one
/// interface is sound, as long as the functions with connections are called through these.
namespace mapi64
{

using Connection = ULONG_PTR;

struct IMAPITable : public IUnknown
{
    virtual HRESULT WINAPI GetLastError(HRESULT hr, ULONG flags, MAPIERROR** error) = 0;
    virtual HRESULT WINAPI Advise(ULONG eventMask, IMAPIAdviseSink* sink, Connection* out) = 0;
    virtual HRESULT WINAPI Unadvise(Connection connection) = 0;
    virtual HRESULT WINAPI GetStatus(ULONG* status, ULONG* type) = 0;
    virtual HRESULT WINAPI SetColumns(SPropTagArray* tags, ULONG flags) = 0;
    virtual HRESULT WINAPI QueryColumns(ULONG flags, SPropTagArray** tags) = 0;
    virtual HRESULT WINAPI GetRowCount(ULONG flags, ULONG* count) = 0;
    virtual HRESULT WINAPI SeekRow(BOOKMARK origin, LONG rows, LONG* sought) = 0;
    virtual HRESULT WINAPI SeekRowApprox(ULONG numerator, ULONG denominator) = 0;
    virtual HRESULT WINAPI QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) = 0;
    virtual HRESULT WINAPI FindRow(SRestriction* res, BOOKMARK origin, ULONG flags) = 0;
    virtual HRESULT WINAPI Restrict(SRestriction* res, ULONG flags) = 0;
    virtual HRESULT WINAPI CreateBookmark(BOOKMARK* out) = 0;
    virtual HRESULT WINAPI FreeBookmark(BOOKMARK bookmark) = 0;
    virtual HRESULT WINAPI SortTable(SSortOrderSet* order, ULONG flags) = 0;
    virtual HRESULT WINAPI QuerySortOrder(SSortOrderSet** order) = 0;
    virtual HRESULT WINAPI QueryRows(LONG count, ULONG flags, SRowSet** rows) = 0;
    virtual HRESULT WINAPI Abort() = 0;
    virtual HRESULT WINAPI
    ExpandRow(ULONG cbKey, BYTE* key, ULONG count, ULONG flags, SRowSet** rows, ULONG* more) = 0;
    virtual HRESULT WINAPI CollapseRow(ULONG cbKey, BYTE* key, ULONG flags, ULONG* count) = 0;
    virtual HRESULT WINAPI WaitForCompletion(ULONG flags, ULONG timeoutMs, ULONG* status) = 0;
    virtual HRESULT WINAPI
    GetCollapseState(ULONG flags, ULONG cbKey, BYTE* key, ULONG* cbState, BYTE** state) = 0;
    virtual HRESULT WINAPI SetCollapseState(ULONG flags,
                                            ULONG cbState,
                                            BYTE* state,
                                            BOOKMARK* location) = 0;
};

struct IMsgStore : public IMAPIProp
{
    virtual HRESULT WINAPI Advise(ULONG cbEntryId,
                                  ENTRYID* entryId,
                                  ULONG eventMask,
                                  IMAPIAdviseSink* sink,
                                  Connection* out) = 0;
    virtual HRESULT WINAPI Unadvise(Connection connection) = 0;
    virtual HRESULT WINAPI CompareEntryIDs(ULONG cbFirst,
                                           ENTRYID* first,
                                           ULONG cbSecond,
                                           ENTRYID* second,
                                           ULONG flags,
                                           ULONG* result) = 0;
    virtual HRESULT WINAPI OpenEntry(ULONG cbEntryId,
                                     ENTRYID* entryId,
                                     const IID* iid,
                                     ULONG flags,
                                     ULONG* objectType,
                                     IUnknown** out) = 0;
    virtual HRESULT WINAPI SetReceiveFolder(LPTSTR messageClass,
                                            ULONG flags,
                                            ULONG cbEntryId,
                                            ENTRYID* entryId) = 0;
    virtual HRESULT WINAPI GetReceiveFolder(LPTSTR messageClass,
                                            ULONG flags,
                                            ULONG* cbEntryId,
                                            ENTRYID** entryId,
                                            LPTSTR* explicitClass) = 0;
    virtual HRESULT WINAPI GetReceiveFolderTable(ULONG flags, ::IMAPITable** out) = 0;
    virtual HRESULT WINAPI StoreLogoff(ULONG* flags) = 0;
    virtual HRESULT WINAPI AbortSubmit(ULONG cbEntryId, ENTRYID* entryId, ULONG flags) = 0;
    virtual HRESULT WINAPI GetOutgoingQueue(ULONG flags, ::IMAPITable** out) = 0;
    virtual HRESULT WINAPI SetLockState(IMessage* message, ULONG state) = 0;
    virtual HRESULT WINAPI FinishedMsg(ULONG flags, ULONG cbEntryId, ENTRYID* entryId) = 0;
    virtual HRESULT WINAPI NotifyNewMail(NOTIFICATION* notification) = 0;
};

struct IMAPISession : public IUnknown
{
    virtual HRESULT WINAPI GetLastError(HRESULT hr, ULONG flags, MAPIERROR** error) = 0;
    virtual HRESULT WINAPI GetMsgStoresTable(ULONG flags, ::IMAPITable** out) = 0;
    virtual HRESULT WINAPI OpenMsgStore(ULONG_PTR window,
                                        ULONG cbEntryId,
                                        ENTRYID* entryId,
                                        const IID* iid,
                                        ULONG flags,
                                        ::IMsgStore** out) = 0;
    virtual HRESULT WINAPI OpenAddressBook(ULONG_PTR window,
                                           const IID* iid,
                                           ULONG flags,
                                           ::IAddrBook** out) = 0;
    virtual HRESULT WINAPI OpenProfileSection(MAPIUID* uid,
                                              const IID* iid,
                                              ULONG flags,
                                              IProfSect** out) = 0;
    virtual HRESULT WINAPI GetStatusTable(ULONG flags, ::IMAPITable** out) = 0;
    virtual HRESULT WINAPI OpenEntry(ULONG cbEntryId,
                                     ENTRYID* entryId,
                                     const IID* iid,
                                     ULONG flags,
                                     ULONG* objectType,
                                     IUnknown** out) = 0;
    virtual HRESULT WINAPI CompareEntryIDs(ULONG cbFirst,
                                           ENTRYID* first,
                                           ULONG cbSecond,
                                           ENTRYID* second,
                                           ULONG flags,
                                           ULONG* result) = 0;
    virtual HRESULT WINAPI Advise(ULONG cbEntryId,
                                  ENTRYID* entryId,
                                  ULONG eventMask,
                                  IMAPIAdviseSink* sink,
                                  Connection* out) = 0;
    virtual HRESULT WINAPI Unadvise(Connection connection) = 0;
    virtual HRESULT WINAPI MessageOptions(ULONG_PTR window,
                                          ULONG flags,
                                          LPTSTR addressType,
                                          IMessage* message) = 0;
    virtual HRESULT WINAPI QueryDefaultMessageOpt(LPTSTR addressType,
                                                  ULONG flags,
                                                  ULONG* count,
                                                  SPropValue** options) = 0;
    virtual HRESULT WINAPI EnumAdrTypes(ULONG flags, ULONG* count, LPTSTR** types) = 0;
    virtual HRESULT WINAPI QueryIdentity(ULONG* cbEntryId, ENTRYID** entryId) = 0;
    virtual HRESULT WINAPI Logoff(ULONG_PTR window, ULONG flags, ULONG reserved) = 0;
    virtual HRESULT WINAPI SetDefaultStore(ULONG flags, ULONG cbEntryId, ENTRYID* entryId) = 0;
    virtual HRESULT WINAPI AdminServices(ULONG flags, IMsgServiceAdmin** out) = 0;
    virtual HRESULT WINAPI ShowForm(ULONG_PTR window,
                                    ::IMsgStore* store,
                                    IMAPIFolder* parent,
                                    const IID* iid,
                                    ULONG_PTR messageToken,
                                    IMessage* message,
                                    ULONG flags,
                                    ULONG status,
                                    ULONG messageFlags,
                                    ULONG access,
                                    LPSTR messageClass) = 0;
    virtual HRESULT WINAPI PrepareForm(const IID* iid, IMessage* message, ULONG_PTR* token) = 0;
};

struct IAddrBook : public IMAPIProp
{
    virtual HRESULT WINAPI OpenEntry(ULONG cbEntryId,
                                     ENTRYID* entryId,
                                     const IID* iid,
                                     ULONG flags,
                                     ULONG* objectType,
                                     IUnknown** out) = 0;
    virtual HRESULT WINAPI CompareEntryIDs(ULONG cbFirst,
                                           ENTRYID* first,
                                           ULONG cbSecond,
                                           ENTRYID* second,
                                           ULONG flags,
                                           ULONG* result) = 0;
    virtual HRESULT WINAPI Advise(ULONG cbEntryId,
                                  ENTRYID* entryId,
                                  ULONG eventMask,
                                  IMAPIAdviseSink* sink,
                                  Connection* out) = 0;
    virtual HRESULT WINAPI Unadvise(Connection connection) = 0;
    virtual HRESULT WINAPI CreateOneOff(LPTSTR name,
                                        LPTSTR addressType,
                                        LPTSTR address,
                                        ULONG flags,
                                        ULONG* cbEntryId,
                                        ENTRYID** entryId) = 0;
    virtual HRESULT WINAPI NewEntry(ULONG_PTR window,
                                    ULONG flags,
                                    ULONG cbContainer,
                                    ENTRYID* container,
                                    ULONG cbTemplate,
                                    ENTRYID* entryTemplate,
                                    ULONG* cbNew,
                                    ENTRYID** newEntry) = 0;
    virtual HRESULT WINAPI ResolveName(ULONG_PTR window,
                                       ULONG flags,
                                       LPTSTR title,
                                       ADRLIST* list) = 0;
    virtual HRESULT WINAPI Address(ULONG_PTR* window, ADRPARM* parameters, ADRLIST** list) = 0;
    virtual HRESULT WINAPI Details(ULONG_PTR* window,
                                   LPFNDISMISS dismiss,
                                   void* dismissContext,
                                   ULONG cbEntryId,
                                   ENTRYID* entryId,
                                   LPFNBUTTON button,
                                   void* buttonContext,
                                   LPTSTR buttonText,
                                   ULONG flags) = 0;
    virtual HRESULT WINAPI RecipOptions(ULONG_PTR window, ULONG flags, ADRENTRY* recipient) = 0;
    virtual HRESULT WINAPI QueryDefaultRecipOpt(LPTSTR addressType,
                                                ULONG flags,
                                                ULONG* count,
                                                SPropValue** options) = 0;
    virtual HRESULT WINAPI GetPAB(ULONG* cbEntryId, ENTRYID** entryId) = 0;
    virtual HRESULT WINAPI SetPAB(ULONG cbEntryId, ENTRYID* entryId) = 0;
    virtual HRESULT WINAPI GetDefaultDir(ULONG* cbEntryId, ENTRYID** entryId) = 0;
    virtual HRESULT WINAPI SetDefaultDir(ULONG cbEntryId, ENTRYID* entryId) = 0;
    virtual HRESULT WINAPI GetSearchPath(ULONG flags, SRowSet** path) = 0;
    virtual HRESULT WINAPI SetSearchPath(ULONG flags, SRowSet* path) = 0;
    virtual HRESULT WINAPI PrepareRecips(ULONG flags, SPropTagArray* tags, ADRLIST* list) = 0;
};

} // namespace mapi64

static_assert(sizeof(SBinary) == 16 && sizeof(SPropValue) == 24 && sizeof(SRow) == 16);
static_assert(sizeof(TABLE_NOTIFICATION) == 80 && sizeof(NOTIFICATION) == 88);
