#pragma once

#include <cstddef>

/// What counts as a large block here; nothing but the tests of it asks for one.
inline constexpr std::size_t kFailingBytes = 1 << 20;

/// While one lives, operator new of this thread has no large blocks.
class CFailingNew final
{
public:
    CFailingNew() noexcept;
    CFailingNew(const CFailingNew&) = delete;
    CFailingNew& operator=(const CFailingNew&) = delete;
    ~CFailingNew();
};
