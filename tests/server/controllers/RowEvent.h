#pragma once

#include <utility>
#include <vector>

#include "BinaryBlock.h"
#include "MapiHeaders.h"

/// One row event.
class CRowEvent final
{
public:
    CRowEvent(ULONG tableEvent, BinaryBlock instance, std::vector<BinaryBlock> entries)
        : m_instance(std::move(instance)), m_entries(std::move(entries))
    {
        m_notification.ulEventType = fnevTableModified;
        TABLE_NOTIFICATION& table = m_notification.info.tab;
        table.ulTableEvent = tableEvent;
        table.propIndex.ulPropTag = PR_INSTANCE_KEY;
        table.propIndex.Value.bin = {BlockSize(m_instance), m_instance.data()};
        for (BinaryBlock& entry : m_entries)
        {
            SPropValue value{};
            value.ulPropTag = PR_ENTRYID;
            value.Value.bin = {BlockSize(entry), entry.data()};
            m_values.push_back(value);
        }
        SPropValue other{};
        other.ulPropTag = PR_OBJECT_TYPE;
        m_values.push_back(other);
        table.row.cValues = static_cast<ULONG>(m_values.size());
        table.row.lpProps = m_values.data();
    }
    CRowEvent(const CRowEvent&) = delete;
    CRowEvent& operator=(const CRowEvent&) = delete;

    NOTIFICATION& Get() { return m_notification; }

private:
    BinaryBlock m_instance;
    std::vector<BinaryBlock> m_entries;
    std::vector<SPropValue> m_values;
    NOTIFICATION m_notification{};
};
