#pragma once

#include <map>
#include <set>

#include "Opening.h"

namespace mapistore
{

struct AttachState;

/// What an open message holds between its opening and its saving. Shared with the attachments and
/// streams that were opened through it, which may outlive the message object.
///
/// Thread: the store folder's lock.
struct MessageState
{
    StorePtr store;
    std::uint64_t id = 0; // 0: not saved yet, or embedded
    std::uint64_t folder = 0;
    bool associated = false;
    bool embedded = false;
    bool writable = false;
    bool submitted = false;
    MessageBody body;
    std::map<ULONG, CValue> set; // changes since the last saving, by identifier
    std::set<ULONG> removed;
    bool recipientsChanged = false;
    bool attachmentsChanged = false;
    std::shared_ptr<AttachState> attachment; // that an embedded message is in

    bool Changed() const
    {
        return !set.empty() || !removed.empty() || recipientsChanged || attachmentsChanged;
    }
    void Change(const PropertyChange& change);
    void Forget();
};

using MessagePtr = std::shared_ptr<MessageState>;

struct AttachState
{
    MessagePtr message;
    LONG number = -1; // of the attachment in its message; -1 until it is saved
    Attachment data;
    bool writable = false;
    bool changed = false;
};

using AttachPtr = std::shared_ptr<AttachState>;

/// IMessage: of a store, not saved yet, or embedded in an attachment.
class CMessageObject final : public CPropObject<IMessage>
{
public:
    CMessageObject(MessagePtr state, Operation madeBy);

    bool Supports(REFIID iid) const override;

    HRESULT WINAPI GetAttachmentTable(ULONG flags, ::IMAPITable** out) override;
    HRESULT WINAPI OpenAttach(ULONG number, const IID* iid, ULONG flags, IAttach** out) override;
    HRESULT WINAPI CreateAttach(const IID* iid, ULONG flags, ULONG* number, IAttach** out) override;
    HRESULT WINAPI DeleteAttach(ULONG number,
                                ULONG window,
                                IMAPIProgress* progress,
                                ULONG flags) override;
    HRESULT WINAPI GetRecipientTable(ULONG flags, ::IMAPITable** out) override;
    HRESULT WINAPI ModifyRecipients(ULONG flags, ADRLIST* list) override;
    HRESULT WINAPI SubmitMessage(ULONG flags) override;
    HRESULT WINAPI SetReadFlag(ULONG flags) override;

protected:
    void Dispose() noexcept override;
    const CValue* FindValue(ULONG id, CValue& scratch) override;
    void AddTags(std::vector<ULONG>& tags) override;
    void Change(const PropertyChange& change) override;
    bool Writable() const override { return m_state->writable; }
    SCODE ProblemOf(ULONG id) const override;
    HRESULT Save(ULONG flags) override;
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG interfaceFlags, ULONG flags) override;
    void CopyParts(IUnknown* target, const std::vector<ULONG>& excluded) override;
    std::function<void(CValue)> StreamTarget() override;

private:
    ::IMAPITable* AttachmentTable(bool unicode, Operation operation) const;
    ::IMAPITable* RecipientTable(bool unicode, Operation operation) const;
    void RequireWrite() const;
    void Store();
    CPropertyBag RecipientOf(const ADRENTRY& entry) const;
    /// The place of the row that an entry names by PR_ROWID; -1 when it names none.
    LONG RowOf(const CPropertyBag& recipient) const;
    void NumberRecipients();

    MessagePtr m_state;
};

/// IAttach.
class CAttachObject final : public CPropObject<IAttach>
{
public:
    CAttachObject(AttachPtr state, Operation madeBy);

    bool Supports(REFIID iid) const override;

protected:
    void Dispose() noexcept override;
    const CValue* FindValue(ULONG id, CValue& scratch) override;
    void AddTags(std::vector<ULONG>& tags) override;
    void Change(const PropertyChange& change) override;
    bool Writable() const override { return m_state->writable; }
    SCODE ProblemOf(ULONG id) const override;
    HRESULT Save(ULONG flags) override;
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG interfaceFlags, ULONG flags) override;
    std::function<void(CValue)> StreamTarget() override;

private:
    AttachPtr m_state;
};

} // namespace mapistore
