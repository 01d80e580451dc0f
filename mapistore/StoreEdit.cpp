#include <algorithm>

#include "EditParts.h"
#include "MapiTags64.h"
#include "MessageRow.h"
#include "PropertyWriter.h"
#include "StoreFolder.h"
#include "Text.h"

namespace mapistore
{

std::shared_ptr<const CMessageRow> CStoreFolder::CreateMessage(std::uint64_t storeId,
                                                               std::uint64_t folderId,
                                                               bool associated,
                                                               MessageBody body)
{
    const std::scoped_lock hold(m_lock);
    std::uint64_t id = 0;
    const CValue now = CValue::Now(PR_CREATION_TIME);
    for (const ULONG tag : {PR_CREATION_TIME, PR_LAST_MODIFICATION_TIME})
    {
        if (body.props.Find(PROP_ID(tag)) == nullptr)
        {
            body.props.Set(now.WithTag(tag));
        }
    }
    Transact([&](CTextEdit& text) {
        const Store* store = m_document->FindStore(storeId);
        if (store == nullptr || FindFolder(*store, folderId) == nullptr)
        {
            ThrowGone();
        }
        id = m_document->nextId++;
        Json message = Json::object();
        message["id"] = id;
        message["folder"] = folderId;
        if (associated)
        {
            message["associated"] = true;
        }
        const CPropertyWriter writer(m_document->names, m_path);
        writer.WriteBody(message, body);
        text.Append(m_document->messageArrays.at(storeId), Dump(message));
    });
    m_document->messageRanges[id] = m_appended.front();
    Store& store = *m_document->FindStore(storeId);
    auto row =
        std::make_shared<const CMessageRow>(store.identity,
                                            id,
                                            folderId,
                                            associated,
                                            ++m_lastOrder,
                                            std::make_shared<const MessageBody>(std::move(body)));
    ReplaceRow(store, nullptr, row);
    return row;
}

std::shared_ptr<const CMessageRow> CStoreFolder::ChangeMessage(std::uint64_t id,
                                                               const MessageBody& body,
                                                               const PropertyChange& change,
                                                               bool recipients,
                                                               bool attachments)
{
    const std::scoped_lock hold(m_lock);
    MessageBody merged;
    PropertyChange full = change;
    full.set.push_back(CValue::Now(PR_LAST_MODIFICATION_TIME));
    Transact([&](CTextEdit& text) {
        const std::shared_ptr<const CMessageRow> row = FindMessage(id);
        if (!row)
        {
            ThrowGone();
        }
        // Another process may have changed other properties since; those stay.
        merged = *row->Body();
        for (const ULONG tag : full.removed)
        {
            merged.props.Remove(tag);
        }
        for (const CValue& value : full.set)
        {
            merged.props.Set(value);
        }
        const CPropertyWriter writer(m_document->names, m_path);
        const TextRange range = m_document->messageRanges.at(id);
        Json message = ParsePart(text.Text(), range);
        if (message.count("properties") == 0)
        {
            message["properties"] = Json::object();
        }
        PropertyChange rest = full;
        for (const CValue& value : full.set)
        {
            if (value.Tag() == PR_MESSAGE_CLASS_W)
            {
                message["class"] = ToUtf8(value.AsText());
                rest.set.erase(std::find(rest.set.begin(), rest.set.end(), value));
                rest.removed.push_back(value.Id());
            }
        }
        writer.Change(message["properties"], rest.set, rest.removed);
        if (recipients)
        {
            merged.recipients = body.recipients;
            message["recipients"] = writer.RecipientsOf(body);
        }
        if (attachments)
        {
            merged.attachments = body.attachments;
            message["attachments"] = writer.AttachmentsOf(body);
        }
        text.Replace(range, InPlace(text.Text(), range, message));
    });
    Store& store = *StoreOfMessage(id);
    const std::shared_ptr<const CMessageRow> before = store.messages.at(id);
    auto after =
        std::make_shared<const CMessageRow>(store.identity,
                                            id,
                                            before->FolderId(),
                                            before->Associated(),
                                            before->Order(),
                                            std::make_shared<const MessageBody>(std::move(merged)));
    ReplaceRow(store, before, after);
    return after;
}

std::shared_ptr<const CMessageRow> CStoreFolder::MoveMessage(std::uint64_t id,
                                                             std::uint64_t folderId)
{
    const std::scoped_lock hold(m_lock);
    Transact([&](CTextEdit& text) {
        const Store* store = StoreOfMessage(id);
        if (store == nullptr || FindFolder(*store, folderId) == nullptr)
        {
            ThrowGone();
        }
        const TextRange range = m_document->messageRanges.at(id);
        Json message = ParsePart(text.Text(), range);
        message["folder"] = folderId;
        text.Replace(range, InPlace(text.Text(), range, message));
    });
    Store& store = *StoreOfMessage(id);
    const std::shared_ptr<const CMessageRow> before = store.messages.at(id);
    auto after = std::make_shared<const CMessageRow>(
        store.identity, id, folderId, before->Associated(), ++m_lastOrder, before->Body());
    ReplaceRow(store, before, after);
    return after;
}

} // namespace mapistore
