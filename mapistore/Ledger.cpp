#include "Ledger.h"

#include <cstdio>

namespace mapistore
{
namespace
{

// A caller that misuses the library in a loop must not fill the memory with notes.
constexpr size_t kMaxMisuseLines = 1000;

std::string Number(std::uint64_t value)
{
    return std::to_string(value);
}

const char* KindName(LedgerKind kind)
{
    switch (kind)
    {
    case LedgerKind::Interface:
        return "interface";
    case LedgerKind::Buffer:
        return "buffer";
    default:
        return "connection";
    }
}

} // namespace

CLedger::Ticket CLedger::Hand(LedgerKind kind,
                              const char* name,
                              Operation operation,
                              std::uint64_t cb)
{
    const std::scoped_lock hold(m_lock);
    const Ticket ticket = ++m_last;
    m_open.emplace_hint(m_open.end(), ticket, Entry{kind, name, operation, cb});
    ++m_counts.handed[static_cast<int>(kind)];
    ++m_counts.left[static_cast<int>(kind)];
    return ticket;
}

void CLedger::Return(Ticket ticket)
{
    const std::scoped_lock hold(m_lock);
    const auto found = m_open.find(ticket);
    if (found != m_open.end())
    {
        --m_counts.left[static_cast<int>(found->second.kind)];
        m_open.erase(found);
    }
}

void CLedger::Misuse(Operation operation, HRESULT hr, const std::string& text)
{
    char code[16];
    std::snprintf(code, sizeof(code), "0x%08lX", static_cast<unsigned long>(hr));
    std::string line = "misuse ";
    line += OperationName(operation);
    line += ' ';
    line += code;
    line += ' ';
    line += text;
    const std::scoped_lock hold(m_lock);
    ++m_counts.misuse;
    if (m_misuse.size() < kMaxMisuseLines)
    {
        m_misuse.push_back(std::move(line));
    }
}

void CLedger::Note(const std::string& text)
{
    const std::scoped_lock hold(m_lock);
    if (m_notes.size() < kMaxMisuseLines)
    {
        m_notes.push_back("note " + text);
    }
}

CLedger::Counts CLedger::Count() const
{
    const std::scoped_lock hold(m_lock);
    return m_counts;
}

std::string CLedger::Report() const
{
    const std::scoped_lock hold(m_lock);
    std::string report = "ledger process " + Number(GetCurrentProcessId()) + "\n";
    for (const auto& [ticket, entry] : m_open)
    {
        report += "left ";
        report += KindName(entry.kind);
        report += ' ';
        report += entry.name;
        if (entry.kind == LedgerKind::Buffer)
        {
            report += " bytes " + Number(entry.cb);
        }
        report += " from ";
        report += OperationName(entry.operation);
        report += " ticket " + Number(ticket) + "\n";
    }
    for (const std::string& line : m_misuse)
    {
        report += line + "\n";
    }
    for (const std::string& line : m_notes)
    {
        report += line + "\n";
    }
    const auto triple = [](const std::uint64_t* counts) {
        return " interfaces " + Number(counts[0]) + " buffers " + Number(counts[1]) +
               " connections " + Number(counts[2]);
    };
    report += "summary handed" + triple(m_counts.handed) + " left" + triple(m_counts.left) +
              " misuse " + Number(m_counts.misuse) + "\n";
    return report;
}

void CLedger::Clear()
{
    const std::scoped_lock hold(m_lock);
    m_open.clear();
    m_misuse.clear();
    m_notes.clear();
    m_counts = Counts();
}

} // namespace mapistore
