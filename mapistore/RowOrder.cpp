#include "RowOrder.h"

#include <algorithm>

namespace mapistore
{
namespace
{

int CompareKeys(const CValue* left, const CValue* right)
{
    if (left == nullptr || right == nullptr)
    {
        return left == right ? 0 : (left == nullptr ? -1 : 1);
    }
    bool comparable = false;
    const int order = CompareValues(*left, *right, comparable);
    return comparable ? order : 0;
}

const CValue* SortKey(const IRow& row, ULONG tag, CValue& scratch)
{
    const CValue* value = row.Find(PROP_ID(tag), scratch);
    return value != nullptr && value->Type() != PT_ERROR ? value : nullptr;
}

} // namespace

bool SortsBefore(const IRow& left, const IRow& right, const std::vector<SSortOrder>& order)
{
    for (const SSortOrder& sort : order)
    {
        CValue leftScratch;
        CValue rightScratch;
        const int relation = CompareKeys(SortKey(left, sort.ulPropTag, leftScratch),
                                         SortKey(right, sort.ulPropTag, rightScratch));
        if (relation != 0)
        {
            return (relation < 0) == (sort.ulOrder == TABLE_SORT_ASCEND);
        }
    }
    return left.Order() < right.Order();
}

void SortRows(std::vector<RowPtr>& rows, const std::vector<SSortOrder>& order)
{
    if (order.empty())
    {
        std::sort(rows.begin(), rows.end(), [](const RowPtr& left, const RowPtr& right) {
            return left->Order() < right->Order();
        });
        return;
    }
    // The keys are taken once: a computed one would be made anew for each comparison.
    struct Keyed
    {
        RowPtr row;
        std::vector<CValue> keys;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(rows.size());
    for (RowPtr& row : rows)
    {
        Keyed one;
        for (const SSortOrder& sort : order)
        {
            CValue scratch;
            const CValue* key = SortKey(*row, sort.ulPropTag, scratch);
            one.keys.push_back(key != nullptr ? *key : CValue());
        }
        one.row = std::move(row);
        keyed.push_back(std::move(one));
    }
    std::sort(keyed.begin(), keyed.end(), [&order](const Keyed& left, const Keyed& right) {
        for (size_t i = 0; i < order.size(); ++i)
        {
            const CValue& a = left.keys[i];
            const CValue& b = right.keys[i];
            const int relation = CompareKeys(a.Empty() ? nullptr : &a, b.Empty() ? nullptr : &b);
            if (relation != 0)
            {
                return (relation < 0) == (order[i].ulOrder == TABLE_SORT_ASCEND);
            }
        }
        return left.row->Order() < right.row->Order();
    });
    for (size_t i = 0; i < rows.size(); ++i)
    {
        rows[i] = std::move(keyed[i].row);
    }
}

} // namespace mapistore
