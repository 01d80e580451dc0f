#pragma once

#include <cstddef>
#include <utility>

#include "LastErrorGuard.h"
#include "MapiHeaders.h"

/// A block that came from MAPI's allocator, freed with MAPIFreeBuffer.
///
/// Owner:  the head block alone; what was allocated with MAPIAllocateMore goes with it. Row sets and
///         address lists have owners of their own below, since this one would leak their rows.
/// Thread: any, one at a time.
template <typename T>
class CMapiBuffer final
{
public:
    CMapiBuffer() noexcept = default;
    CMapiBuffer(CMapiBuffer&& other) noexcept : m_block(other.Detach()) {}
    ~CMapiBuffer() { Reset(); }

    CMapiBuffer& operator=(CMapiBuffer&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            m_block = other.Detach();
        }
        return *this;
    }
    CMapiBuffer(const CMapiBuffer&) = delete;
    CMapiBuffer& operator=(const CMapiBuffer&) = delete;

    [[nodiscard]] static CMapiBuffer Adopt(T* block) noexcept
    {
        CMapiBuffer result;
        result.m_block = block;
        return result;
    }

    [[nodiscard]] T* Get() const noexcept { return m_block; }
    [[nodiscard]] T* operator->() const noexcept { return m_block; }
    [[nodiscard]] T& operator[](std::size_t index) const noexcept { return m_block[index]; }
    explicit operator bool() const noexcept { return m_block != nullptr; }

    /// The out slot: frees what is held, then lends the empty place.
    [[nodiscard]] T** Put() noexcept
    {
        Reset();
        return &m_block;
    }
    /// The same for MAPIAllocateBuffer and other parameters of type `void**`.
    [[nodiscard]] void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

    [[nodiscard]] T* Detach() noexcept { return std::exchange(m_block, nullptr); }

    void Reset() noexcept
    {
        if (T* const block = Detach(); block != nullptr)
        {
            const CLastErrorGuard keep;
            MAPIFreeBuffer(block);
        }
    }

private:
    T* m_block = nullptr;
};

/// A row set, freed with FreeProws: the rows one by one, then the set.
class CMapiRows final
{
public:
    CMapiRows() noexcept = default;
    CMapiRows(CMapiRows&& other) noexcept : m_rows(other.Detach()) {}
    ~CMapiRows() { Reset(); }

    CMapiRows& operator=(CMapiRows&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            m_rows = other.Detach();
        }
        return *this;
    }
    CMapiRows(const CMapiRows&) = delete;
    CMapiRows& operator=(const CMapiRows&) = delete;

    [[nodiscard]] SRowSet* Get() const noexcept { return m_rows; }
    explicit operator bool() const noexcept { return m_rows != nullptr; }

    /// Number of rows; 0 without a set.
    [[nodiscard]] ULONG Count() const noexcept { return m_rows != nullptr ? m_rows->cRows : 0; }
    [[nodiscard]] const SRow& operator[](std::size_t index) const noexcept
    {
        return m_rows->aRow[index];
    }
    [[nodiscard]] const SRow* begin() const noexcept
    {
        return m_rows != nullptr ? &m_rows->aRow[0] : nullptr;
    }
    [[nodiscard]] const SRow* end() const noexcept { return begin() + Count(); }

    /// The out slot: frees what is held, then lends the empty place.
    [[nodiscard]] SRowSet** Put() noexcept
    {
        Reset();
        return &m_rows;
    }

    [[nodiscard]] SRowSet* Detach() noexcept { return std::exchange(m_rows, nullptr); }

    void Reset() noexcept
    {
        if (SRowSet* const rows = Detach(); rows != nullptr)
        {
            const CLastErrorGuard keep;
            FreeProws(rows);
        }
    }

private:
    SRowSet* m_rows = nullptr;
};

/// An address list whose entries carry property arrays of their own, as IAddrBook::ResolveName
/// wants them: each array is freed, then the list.
class CMapiAddrList final
{
public:
    CMapiAddrList() noexcept = default;
    CMapiAddrList(CMapiAddrList&& other) noexcept : m_list(other.Detach()) {}
    ~CMapiAddrList() { Reset(); }

    CMapiAddrList& operator=(CMapiAddrList&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            m_list = other.Detach();
        }
        return *this;
    }
    CMapiAddrList(const CMapiAddrList&) = delete;
    CMapiAddrList& operator=(const CMapiAddrList&) = delete;

    [[nodiscard]] ADRLIST* Get() const noexcept { return m_list; }
    [[nodiscard]] ADRLIST* operator->() const noexcept { return m_list; }
    explicit operator bool() const noexcept { return m_list != nullptr; }

    /// The out slot: frees what is held, then lends the empty place.
    [[nodiscard]] ADRLIST** Put() noexcept
    {
        Reset();
        return &m_list;
    }
    /// The same for MAPIAllocateBuffer.
    [[nodiscard]] void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

    [[nodiscard]] ADRLIST* Detach() noexcept { return std::exchange(m_list, nullptr); }

    void Reset() noexcept
    {
        if (ADRLIST* const list = Detach(); list != nullptr)
        {
            const CLastErrorGuard keep;
            for (ULONG entry = 0; entry < list->cEntries; ++entry)
            {
                MAPIFreeBuffer(list->aEntries[entry].rgPropVals);
            }
            MAPIFreeBuffer(list);
        }
    }

private:
    ADRLIST* m_list = nullptr;
};
