#include "ExceptionWindow.h"

#include <algorithm>

ExceptionWindow CollectExceptionsInWindow(std::uint32_t windowStart,
                                          std::uint32_t windowEnd,
                                          const ExceptionMap& exceptions)
{
    const auto isInside = [windowStart, windowEnd](std::uint32_t minutes) {
        return minutes >= windowStart && minutes <= windowEnd;
    };
    ExceptionWindow window;
    for (const auto& [key, info] : exceptions)
    {
        const bool isDeleted = info.state == kExceptionDeleted;
        if (isInside(info.originalStart))
        {
            (isDeleted ? window.deleted : window.moved).push_back(info.originalStart);
        }
        if (!isDeleted && isInside(info.start))
        {
            window.added.push_back(key);
        }
    }
    return window;
}

CTakenSlots::CTakenSlots(const ExceptionWindow& window) : m_starts(window.deleted)
{
    m_starts.insert(m_starts.end(), window.moved.begin(), window.moved.end());
    std::sort(m_starts.begin(), m_starts.end());
}

bool CTakenSlots::Has(std::uint32_t start) const noexcept
{
    return std::binary_search(m_starts.begin(), m_starts.end(), start);
}
