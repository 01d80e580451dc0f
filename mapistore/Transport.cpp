#include "MapiTags64.h"
#include "MessageRow.h"
#include "Runtime.h"
#include "StoreFolder.h"
#include "Text.h"

namespace mapistore
{

void CStoreFolder::Send(std::uint64_t message)
{
    {
        const std::scoped_lock hold(m_sendLock);
        m_sendQueue.push_back(message);
    }
    m_sendWake.notify_one();
}

bool CStoreFolder::Recall(std::uint64_t id)
{
    const std::scoped_lock hold(m_lock);
    const std::shared_ptr<const CMessageRow> row = FindMessage(id);
    const ULONG flags =
        row ? static_cast<ULONG>(row->Body()->props.LongOf(PROP_ID(PR_MESSAGE_FLAGS), 0)) : 0;
    if ((flags & MSGFLAG_SUBMIT) == 0)
    {
        return false;
    }
    PropertyChange change;
    change.set.push_back(CValue::Long(
        PR_MESSAGE_FLAGS, static_cast<LONG>((flags & ~MSGFLAG_SUBMIT) | MSGFLAG_UNSENT)));
    ChangeMessage(id, *row->Body(), change, false, false);
    return true;
}

void CStoreFolder::Transport()
{
    std::unique_lock hold(m_sendLock);
    while (true)
    {
        m_sendWake.wait(hold, [this] { return m_sendStopping || !m_sendQueue.empty(); });
        if (m_sendStopping)
        {
            return;
        }
        const std::uint64_t message = m_sendQueue.front();
        m_sendQueue.pop_front();
        hold.unlock();
        std::uint64_t delayMs = 0;
        {
            const std::scoped_lock document(m_lock);
            delayMs = m_document->sendDelayMs;
        }
        const bool stopped =
            WaitForSingleObject(m_stopEvent, static_cast<DWORD>(delayMs)) == WAIT_OBJECT_0;
        if (!stopped)
        {
            try
            {
                Deliver(message);
            }
            catch (const CMapiError& error)
            {
                Runtime().Say("a submitted message could not leave: " + ToUtf8(error.Text()));
            }
            catch (...)
            {
                Runtime().Say("a submitted message could not leave: out of memory");
            }
        }
        hold.lock();
    }
}

void CStoreFolder::Deliver(std::uint64_t id)
{
    const std::scoped_lock hold(m_lock);
    const std::shared_ptr<const CMessageRow> row = FindMessage(id);
    if (!row)
    {
        return; // deleted before it left
    }
    const CPropertyBag& props = row->Body()->props;
    if ((static_cast<ULONG>(props.LongOf(PROP_ID(PR_MESSAGE_FLAGS), 0)) & MSGFLAG_SUBMIT) == 0)
    {
        return; // taken back
    }
    if (props.BoolOf(PROP_ID(PR_DELETE_AFTER_SUBMIT)))
    {
        DeleteMessage(id);
        return;
    }
    std::uint64_t target = 0;
    const CValue* sentId = props.Find(PROP_ID(PR_SENTMAIL_ENTRYID));
    const std::optional<EntryName> sent = sentId != nullptr && sentId->Type() == PT_BINARY
                                              ? ReadEntryId(sentId->Bytes())
                                              : std::nullopt;
    if (sent && sent->objectType == MAPI_FOLDER &&
        FindFolder(*StoreOfMessage(id), sent->id) != nullptr)
    {
        target = sent->id;
    }
    const ULONG flags = static_cast<ULONG>(props.LongOf(PROP_ID(PR_MESSAGE_FLAGS), 0));
    PropertyChange change;
    change.set.push_back(CValue::Long(
        PR_MESSAGE_FLAGS,
        static_cast<LONG>((flags & ~(MSGFLAG_SUBMIT | MSGFLAG_UNSENT)) | MSGFLAG_READ)));
    change.set.push_back(CValue::Now(PR_MESSAGE_DELIVERY_TIME));
    ChangeMessage(id, *row->Body(), change, false, false);
    // Without PR_SENTMAIL_ENTRYID a sent message stays where it is.
    if (target != 0)
    {
        MoveMessage(id, target);
    }
}

} // namespace mapistore
