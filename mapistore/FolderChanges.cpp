#include <set>

#include "Folder.h"
#include "FolderRow.h"
#include "MessageRow.h"
#include "Text.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IMAPIFolder", method);
}

std::wstring TextOf(LPTSTR text, bool unicode)
{
    if (text == nullptr)
    {
        return {};
    }
    return unicode ? std::wstring(text) : FromAnsi(reinterpret_cast<const char*>(text));
}

/// The folder behind a target of the caller's, which has to be one of ours. Borrowed.
CFolderObject& TargetFolder(const IID* iid, void* target)
{
    RequireOut(target);
    void* own = nullptr;
    if (static_cast<IUnknown*>(target)->QueryInterface(kOwnFolder, &own) != S_OK)
    {
        throw CMisuse(MAPI_E_INTERFACE_NOT_SUPPORTED, L"the target is no folder of a store");
    }
    auto* folder = static_cast<CFolderObject*>(static_cast<IMAPIFolder*>(own));
    folder->Release(); // the caller's reference stands
    if (iid != nullptr && !folder->Supports(*iid))
    {
        throw CMisuse(MAPI_E_INTERFACE_NOT_SUPPORTED, kNoSuchInterface);
    }
    return *folder;
}

} // namespace

std::shared_ptr<const CMessageRow> CFolderObject::MessageOf(const SBinary& id) const
{
    const std::optional<EntryName> name =
        ReadEntryId(id.cb, reinterpret_cast<const ENTRYID*>(id.lpb));
    if (!name || name->objectType != MAPI_MESSAGE || name->uid != m_store->uid)
    {
        throw CMapiError(MAPI_E_INVALID_ENTRYID, L"no identifier of a message of this store");
    }
    std::shared_ptr<const CMessageRow> row = m_store->folder->FindMessage(name->id);
    return row && row->FolderId() == m_id ? row : nullptr;
}

HRESULT CFolderObject::NoSupport(Operation operation) noexcept
{
    return Run(operation, [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

HRESULT CFolderObject::CreateMessage(const IID* iid, ULONG flags, IMessage** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("CreateMessage");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, MAPI_ASSOCIATED | MAPI_DEFERRED_ERRORS);
        RequireOut(out);
        RequireWrite();
        Data();
        *out = NewMessageObject(m_store, m_id, (flags & MAPI_ASSOCIATED) != 0, iid, kOp);
        return S_OK;
    });
}

HRESULT CFolderObject::CopyMessages(
    ENTRYLIST* messages, const IID* iid, void* target, ULONG, IMAPIProgress*, ULONG flags)
{
    constexpr Operation kOp = Op("CopyMessages");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, MAPI_UNICODE | MAPI_DECLINE_OK | MESSAGE_MOVE | MESSAGE_DIALOG);
        RequireOut(messages);
        const CFolderObject& to = TargetFolder(iid, target);
        const bool move = (flags & MESSAGE_MOVE) != 0;
        if (move)
        {
            RequireWrite();
        }
        to.RequireWrite();
        bool complete = true;
        for (ULONG i = 0; i < messages->cValues; ++i)
        {
            const auto row = MessageOf(messages->lpbin[i]);
            complete = complete && row;
            if (row && move && to.m_store->store == m_store->store)
            {
                m_store->folder->MoveMessage(row->Id(), to.m_id);
            }
            else if (row)
            {
                m_store->folder->CreateMessage(
                    to.m_store->store, to.m_id, row->Associated(), *row->Body());
                if (move)
                {
                    m_store->folder->DeleteMessage(row->Id());
                }
            }
        }
        return complete ? S_OK : MAPI_W_PARTIAL_COMPLETION;
    });
}

HRESULT CFolderObject::DeleteMessages(ENTRYLIST* messages, ULONG, IMAPIProgress*, ULONG flags)
{
    constexpr Operation kOp = Op("DeleteMessages");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, MESSAGE_DIALOG);
        RequireOut(messages);
        RequireWrite();
        std::vector<std::uint64_t> ids;
        std::set<std::uint64_t> seen;
        for (ULONG i = 0; i < messages->cValues; ++i)
        {
            const auto row = MessageOf(messages->lpbin[i]);
            if (row && seen.insert(row->Id()).second)
            {
                ids.push_back(row->Id());
            }
        }
        const size_t gone = m_store->folder->DeleteMessages(ids);
        return gone == messages->cValues ? S_OK : MAPI_W_PARTIAL_COMPLETION;
    });
}

HRESULT CFolderObject::CreateFolder(
    ULONG type, LPTSTR name, LPTSTR comment, const IID* iid, ULONG flags, IMAPIFolder** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("CreateFolder");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS | OPEN_IF_EXISTS);
        RequireOut(out);
        RequireWrite();
        if (type == FOLDER_SEARCH)
        {
            return MAPI_E_NO_SUPPORT;
        }
        const bool unicode = (flags & MAPI_UNICODE) != 0;
        const std::wstring wanted = TextOf(name, unicode);
        if (type != FOLDER_GENERIC || wanted.empty())
        {
            Refuse(kOp, MAPI_E_INVALID_PARAMETER, "a folder without a name or of an unknown type");
        }
        std::uint64_t id = 0;
        for (const Folder& folder : StoreData().folders)
        {
            if (folder.parent == m_id &&
                EqualText(folder.props.TextOf(PROP_ID(PR_DISPLAY_NAME_W)), wanted))
            {
                id = folder.id;
            }
        }
        if (id != 0 && (flags & OPEN_IF_EXISTS) == 0)
        {
            return MAPI_E_COLLISION;
        }
        if (id == 0)
        {
            id = m_store->folder->CreateFolder(
                m_store->store, m_id, wanted, TextOf(comment, unicode));
        }
        *out = static_cast<IMAPIFolder*>(OpenFolderObject(m_store, id, iid, MAPI_MODIFY, kOp));
        return S_OK;
    });
}

void CFolderObject::DeleteAll(std::uint64_t id, bool messages, bool folders, bool associated)
{
    CStoreFolder& folder = *m_store->folder;
    const Folder* data = FindFolder(StoreData(), id);
    if (messages && data != nullptr)
    {
        std::vector<std::uint64_t> ids;
        for (const auto& message : data->messages)
        {
            if (associated || !message->Associated())
            {
                ids.push_back(message->Id());
            }
        }
        folder.DeleteMessages(ids);
    }
    if (folders)
    {
        std::vector<std::uint64_t> children;
        for (const Folder& child : StoreData().folders)
        {
            if (child.parent == id)
            {
                children.push_back(child.id);
            }
        }
        for (const std::uint64_t child : children)
        {
            DeleteAll(child, true, true, true);
            folder.DeleteFolder(child);
        }
    }
}

HRESULT
CFolderObject::DeleteFolder(ULONG cb, ENTRYID* entryId, ULONG, IMAPIProgress*, ULONG flags)
{
    constexpr Operation kOp = Op("DeleteFolder");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, DEL_MESSAGES | DEL_FOLDERS | FOLDER_DIALOG);
        RequireWrite();
        const std::optional<EntryName> name = ReadEntryId(cb, entryId);
        if (!name || name->objectType != MAPI_FOLDER || name->uid != m_store->uid)
        {
            Refuse(kOp, MAPI_E_INVALID_ENTRYID, "no identifier of a folder of this store");
        }
        const Folder* data = FindFolder(StoreData(), name->id);
        if (data == nullptr || data->parent != m_id)
        {
            return MAPI_E_NOT_FOUND;
        }
        DeleteAll(name->id, (flags & DEL_MESSAGES) != 0, (flags & DEL_FOLDERS) != 0, true);
        m_store->folder->DeleteFolder(name->id);
        return S_OK;
    });
}

HRESULT CFolderObject::EmptyFolder(ULONG, IMAPIProgress*, ULONG flags)
{
    constexpr Operation kOp = Op("EmptyFolder");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, FOLDER_DIALOG | DEL_ASSOCIATED);
        RequireWrite();
        DeleteAll(m_id, true, true, (flags & DEL_ASSOCIATED) != 0);
        return S_OK;
    });
}

HRESULT CFolderObject::SetReadFlags(ENTRYLIST* messages, ULONG, IMAPIProgress*, ULONG flags)
{
    constexpr Operation kOp = Op("SetReadFlags");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        constexpr ULONG kKnown = CLEAR_READ_FLAG | SUPPRESS_RECEIPT | MESSAGE_DIALOG |
                                 GENERATE_RECEIPT_ONLY | MAPI_DEFERRED_ERRORS;
        CheckFlags(kOp, flags, kKnown);
        RequireWrite();
        bool complete = true;
        const auto list = Data().messages;
        for (const auto& row : list)
        {
            bool wanted = messages == nullptr && !row->Associated();
            for (ULONG i = 0; messages != nullptr && i < messages->cValues; ++i)
            {
                wanted = wanted || MessageOf(messages->lpbin[i]) == row;
            }
            if (!wanted)
            {
                continue;
            }
            CValue scratch;
            const CValue* held = row->Find(PROP_ID(PR_MESSAGE_FLAGS), scratch);
            const auto before = static_cast<ULONG>(held != nullptr ? held->AsLong() : 0);
            const ULONG after =
                (flags & CLEAR_READ_FLAG) != 0 ? before & ~MSGFLAG_READ : before | MSGFLAG_READ;
            if (after != before)
            {
                PropertyChange change;
                change.set.push_back(CValue::Long(PR_MESSAGE_FLAGS, static_cast<LONG>(after)));
                m_store->folder->ChangeMessage(row->Id(), *row->Body(), change, false, false);
            }
        }
        for (ULONG i = 0; messages != nullptr && i < messages->cValues; ++i)
        {
            complete = complete && MessageOf(messages->lpbin[i]);
        }
        return complete ? S_OK : MAPI_W_PARTIAL_COMPLETION;
    });
}

HRESULT CFolderObject::GetMessageStatus(ULONG cb, ENTRYID* entryId, ULONG flags, ULONG* status)
{
    ClearOut(status);
    constexpr Operation kOp = Op("GetMessageStatus");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        CheckFlags(kOp, flags, 0);
        RequireOut(status);
        const auto row = MessageOf({cb, reinterpret_cast<BYTE*>(entryId)});
        if (!row)
        {
            return MAPI_E_NOT_FOUND;
        }
        *status = static_cast<ULONG>(row->Body()->props.LongOf(PROP_ID(PR_MSG_STATUS), 0));
        return S_OK;
    });
}

HRESULT CFolderObject::SetMessageStatus(
    ULONG cb, ENTRYID* entryId, ULONG status, ULONG mask, ULONG* oldStatus)
{
    ClearOut(oldStatus);
    constexpr Operation kOp = Op("SetMessageStatus");
    return Run(kOp, [&]() -> HRESULT {
        const std::scoped_lock hold(m_store->folder->Lock());
        RequireWrite();
        const auto row = MessageOf({cb, reinterpret_cast<BYTE*>(entryId)});
        if (!row)
        {
            return MAPI_E_NOT_FOUND;
        }
        const auto before =
            static_cast<ULONG>(row->Body()->props.LongOf(PROP_ID(PR_MSG_STATUS), 0));
        PropertyChange change;
        change.set.push_back(
            CValue::Long(PR_MSG_STATUS, static_cast<LONG>((before & ~mask) | (status & mask))));
        m_store->folder->ChangeMessage(row->Id(), *row->Body(), change, false, false);
        if (oldStatus != nullptr)
        {
            *oldStatus = before;
        }
        return S_OK;
    });
}

HRESULT CFolderObject::SetSearchCriteria(SRestriction*, ENTRYLIST*, ULONG)
{
    return NoSupport(Op("SetSearchCriteria"));
}

HRESULT
CFolderObject::GetSearchCriteria(ULONG, SRestriction** res, ENTRYLIST** containers, ULONG* state)
{
    ClearOut(res);
    ClearOut(containers);
    ClearOut(state);
    return NoSupport(Op("GetSearchCriteria"));
}

HRESULT CFolderObject::CopyFolder(
    ULONG, ENTRYID*, const IID*, void*, LPTSTR, ULONG, IMAPIProgress*, ULONG)
{
    return NoSupport(Op("CopyFolder"));
}

HRESULT CFolderObject::SaveContentsSort(SSortOrderSet*, ULONG)
{
    return NoSupport(Op("SaveContentsSort"));
}

} // namespace mapistore
