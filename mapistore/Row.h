#pragma once

#include <memory>

#include "PropertyBag.h"

namespace mapistore
{

/// One row of a table: a message, a folder, a recipient, an address book entry. Immutable: a changed
/// object is a new row with the same identifier.
///
/// Thread: any.
class IRow
{
public:
    virtual ~IRow() = default;

    /// The same for the old and the new row of one object, and for no other row of a table.
    virtual std::uint64_t Id() const = 0;
    /// The order of rows that nobody sorted; never the same for two rows of a table.
    virtual std::uint64_t Order() const = 0;
    /// The property, or null. A computed one is put into `scratch`, whose life bounds the result's.
    virtual const CValue* Find(ULONG id, CValue& scratch) const = 0;
    /// The rows of a subobject such as PR_MESSAGE_RECIPIENTS. Null when there is no such property.
    virtual const std::vector<CPropertyBag>* SubRows(ULONG tag) const = 0;
    /// Every property that `Find` would give, for TBL_ALL_COLUMNS.
    virtual void AddTags(std::vector<ULONG>& tags) const = 0;
};

using RowPtr = std::shared_ptr<const IRow>;

/// A row that is a set of properties and nothing else.
class CBagRow final : public IRow
{
public:
    CBagRow(std::uint64_t id, CPropertyBag bag) : m_id(id), m_bag(std::move(bag)) {}

    std::uint64_t Id() const override { return m_id; }
    std::uint64_t Order() const override { return m_id; }
    const CValue* Find(ULONG id, CValue&) const override { return m_bag.Find(id); }
    const std::vector<CPropertyBag>* SubRows(ULONG) const override { return nullptr; }
    void AddTags(std::vector<ULONG>& tags) const override
    {
        for (const CValue& value : m_bag)
        {
            tags.push_back(value.Tag());
        }
    }

private:
    std::uint64_t m_id;
    CPropertyBag m_bag;
};

} // namespace mapistore
