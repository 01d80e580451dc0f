// A process that writes into a store until it is killed or has done its share: the other side of the
// tests of crashes and of several processes.
//
// usage: mapistore_writer NAME COUNT EVENT
//   Creates COUNT messages in the inbox (0: without end), each of them changed once and every third
//   deleted again. Sets EVENT when the first one stands.
#include <cstdio>
#include <string>

#include "Mapi64.h"
#include "MapiTags64.h"

namespace
{

bool Good(HRESULT hr, const char* what)
{
    if (FAILED(hr))
    {
        std::fprintf(stderr, "%s: 0x%08lX\n", what, static_cast<unsigned long>(hr));
    }
    return SUCCEEDED(hr);
}

mapi64::IMsgStore* OpenDefaultStore(mapi64::IMAPISession* session)
{
    mapi64::IMAPITable* table = nullptr;
    SRowSet* rows = nullptr;
    mapi64::IMsgStore* store = nullptr;
    if (!Good(session->GetMsgStoresTable(0, reinterpret_cast<::IMAPITable**>(&table)), "stores") ||
        !Good(table->QueryRows(1, 0, &rows), "rows"))
    {
        return nullptr;
    }
    const SBinary id = rows->aRow[0].lpProps[0].Value.bin;
    Good(session->OpenMsgStore(0,
                               id.cb,
                               reinterpret_cast<ENTRYID*>(id.lpb),
                               nullptr,
                               MAPI_BEST_ACCESS,
                               reinterpret_cast<::IMsgStore**>(&store)),
         "open store");
    FreeProws(rows);
    table->Release();
    return store;
}

IMAPIFolder* OpenInbox(mapi64::IMsgStore* store)
{
    ULONG cb = 0;
    ULONG type = 0;
    ENTRYID* id = nullptr;
    IMAPIFolder* inbox = nullptr;
    if (Good(store->GetReceiveFolder(nullptr, MAPI_UNICODE, &cb, &id, nullptr), "inbox"))
    {
        Good(store->OpenEntry(
                 cb, id, nullptr, MAPI_BEST_ACCESS, &type, reinterpret_cast<IUnknown**>(&inbox)),
             "open inbox");
        MAPIFreeBuffer(id);
    }
    return inbox;
}

bool SetTwins(IMessage* message, const std::wstring& text)
{
    // The two always stand together: a store with only one of them was torn.
    SPropValue values[2] = {};
    values[0].ulPropTag = PR_SUBJECT_W;
    values[0].Value.lpszW = const_cast<wchar_t*>(text.c_str());
    values[1].ulPropTag = PR_COMMENT_W;
    values[1].Value.lpszW = const_cast<wchar_t*>(text.c_str());
    return Good(message->SetProps(2, values, nullptr), "set") &&
           Good(message->SaveChanges(KEEP_OPEN_READWRITE), "save");
}

bool DeleteIt(IMAPIFolder* inbox, IMessage* message)
{
    SPropTagArray tags{1, {PR_ENTRYID}};
    SPropValue* id = nullptr;
    ULONG count = 0;
    if (!Good(message->GetProps(&tags, 0, &count, &id), "identifier"))
    {
        return false;
    }
    ENTRYLIST list{1, &id->Value.bin};
    const bool good = Good(inbox->DeleteMessages(&list, 0, nullptr, 0), "delete");
    MAPIFreeBuffer(id);
    return good;
}

bool Write(IMAPIFolder* inbox, const std::wstring& name, long number)
{
    IMessage* message = nullptr;
    if (!Good(inbox->CreateMessage(nullptr, 0, &message), "create"))
    {
        return false;
    }
    const std::wstring text = name + L" " + std::to_wstring(number);
    bool good = SetTwins(message, text) && SetTwins(message, text + L" changed");
    if (good && number % 3 == 2)
    {
        good = DeleteIt(inbox, message);
    }
    message->Release();
    return good;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc != 4)
    {
        std::fprintf(stderr, "usage: mapistore_writer NAME COUNT EVENT\n");
        return 2;
    }
    const std::wstring name = argv[1];
    const long count = std::wcstol(argv[2], nullptr, 10);
    MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    mapi64::IMAPISession* session = nullptr;
    wchar_t profile[] = L"Demo";
    if (!Good(MAPIInitialize(&init), "initialize") ||
        !Good(MAPILogonEx(0,
                          profile,
                          nullptr,
                          MAPI_UNICODE | MAPI_EXTENDED | MAPI_NEW_SESSION,
                          reinterpret_cast<LPMAPISESSION*>(&session)),
              "logon"))
    {
        return 1;
    }
    mapi64::IMsgStore* store = OpenDefaultStore(session);
    IMAPIFolder* inbox = store != nullptr ? OpenInbox(store) : nullptr;
    bool good = inbox != nullptr;
    HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, argv[3]);
    for (long i = 0; good && (count == 0 || i < count); ++i)
    {
        good = Write(inbox, name, i);
        if (i == 0 && ready != nullptr)
        {
            SetEvent(ready);
        }
    }
    if (inbox != nullptr)
    {
        inbox->Release();
    }
    if (store != nullptr)
    {
        store->Release();
    }
    session->Release();
    MAPIUninitialize();
    return good ? 0 : 1;
}
