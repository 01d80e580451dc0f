#pragma once

#include "Document.h"

namespace mapistore
{

/// A message of a store, as a row of a contents table and as what an opened message begins with.
class CMessageRow final : public IRow
{
public:
    CMessageRow(std::shared_ptr<const StoreIdentity> store,
                std::uint64_t id,
                std::uint64_t folder,
                bool associated,
                std::uint64_t order,
                std::shared_ptr<const MessageBody> body);

    std::uint64_t Id() const override { return m_id; }
    std::uint64_t Order() const override { return m_order; }
    const CValue* Find(ULONG id, CValue& scratch) const override;
    const std::vector<CPropertyBag>* SubRows(ULONG tag) const override;
    void AddTags(std::vector<ULONG>& tags) const override;

    std::uint64_t FolderId() const { return m_folder; }
    bool Associated() const { return m_associated; }
    const std::shared_ptr<const MessageBody>& Body() const { return m_body; }
    const std::shared_ptr<const StoreIdentity>& StoreOf() const { return m_store; }
    bool SameContent(const CMessageRow& other) const;

private:
    std::shared_ptr<const StoreIdentity> m_store;
    std::uint64_t m_id;
    std::uint64_t m_folder;
    std::uint64_t m_order;
    bool m_associated;
    std::shared_ptr<const MessageBody> m_body;
    mutable std::vector<CPropertyBag> m_attachmentRows; // only for RES_SUBRESTRICTION
};

bool SameBody(const MessageBody& left, const MessageBody& right);

/// Properties that the library makes of a message when they are not stored, and PR_OBJECT_TYPE.
/// The bag is that of the message as it stands now.
const CValue* FindMessageValue(const MessageBody& body, ULONG id, CValue& scratch);

/// The identifiers above; the ones that every message has.
void AddComputedMessageTags(const MessageBody& body, std::vector<ULONG>& tags);

/// Row identifiers as PR_INSTANCE_KEY, PR_RECORD_KEY and the like.
CValue MakeInstanceKey(std::uint64_t id);
CValue MakeStoreRecordKey(const Uid& uid);

} // namespace mapistore
