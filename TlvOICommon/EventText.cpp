#include "EventText.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "AtMemory.h"

CEventText::CEventText(std::size_t length) noexcept
{
    constexpr std::size_t kMostUnits = std::numeric_limits<std::size_t>::max() / sizeof(WCHAR) - 1;
    if (length <= kMostUnits)
    {
        m_block = static_cast<WCHAR*>(at_mem_alloc((length + 1) * sizeof(WCHAR)));
    }
    m_isLost = m_block == nullptr;
    if (!m_isLost)
    {
        m_length = length;
        m_block[length] = 0;
    }
}

CEventText::CEventText(WStringView text) noexcept : CEventText(text.size())
{
    if (!m_isLost)
    {
        std::copy(text.begin(), text.end(), m_block);
    }
}

CEventText::CEventText(CEventText&& other) noexcept
    : m_block(std::exchange(other.m_block, nullptr)), m_length(std::exchange(other.m_length, 0)),
      m_isLost(std::exchange(other.m_isLost, false))
{
}

CEventText& CEventText::operator=(CEventText&& other) noexcept
{
    if (this != &other)
    {
        at_mem_free(m_block);
        m_block = std::exchange(other.m_block, nullptr);
        m_length = std::exchange(other.m_length, 0);
        m_isLost = std::exchange(other.m_isLost, false);
    }
    return *this;
}

CEventText::~CEventText()
{
    at_mem_free(m_block);
}

WCHAR* CEventText::Release() noexcept
{
    m_length = 0;
    return std::exchange(m_block, nullptr);
}
