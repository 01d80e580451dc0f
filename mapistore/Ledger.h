#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "Operation.h"

namespace mapistore
{

enum class LedgerKind
{
    Interface,
    Buffer,
    Connection
};

/// Counts what the library hands out and has not got back, and notes what it refused.
///
/// Thread: any.
class CLedger
{
public:
    using Ticket = std::uint64_t;

    struct Counts
    {
        std::uint64_t handed[3] = {0, 0, 0};
        std::uint64_t left[3] = {0, 0, 0};
        std::uint64_t misuse = 0;
    };

    Ticket Hand(LedgerKind kind, const char* name, Operation operation, std::uint64_t cb);
    void Return(Ticket ticket);
    /// A call that was refused, or worse, with the status that the caller got.
    void Misuse(Operation operation, HRESULT hr, const std::string& text);
    void Note(const std::string& text);

    Counts Count() const;
    /// The report as docs/mapistore-library.md describes it.
    std::string Report() const;
    void Clear();

private:
    struct Entry
    {
        LedgerKind kind;
        const char* name;
        Operation operation;
        std::uint64_t cb;
    };

    mutable std::mutex m_lock; // guards everything below
    std::map<Ticket, Entry> m_open;
    std::vector<std::string> m_misuse;
    std::vector<std::string> m_notes;
    Counts m_counts;
    Ticket m_last = 0;
};

} // namespace mapistore
