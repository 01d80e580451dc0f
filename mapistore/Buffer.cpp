#include "Buffer.h"

#include <atomic>
#include <cstring>
#include <deque>
#include <mutex>
#include <new>
#include <unordered_map>

#include "Runtime.h"

namespace mapistore
{
namespace buffers
{
namespace
{

constexpr size_t kPage = 4096;
constexpr size_t kMaxQuarantine = 20000;
constexpr unsigned char kFresh = 0xCD;
constexpr unsigned char kFreed = 0xDD;
constexpr unsigned char kSlack = 0xFD;

struct Piece
{
    void* data = nullptr;
    size_t cb = 0;
    // Guard mode: the reserved range, and how many bytes lie between the data's end and the page.
    void* base = nullptr;
    size_t cbBase = 0;
    size_t slack = 0;
};

struct Registry
{
    std::mutex lock; // guards the members below
    std::unordered_map<const void*, Head*> heads;
    std::deque<std::pair<void*, size_t>> quarantine;
};

Registry& TheRegistry()
{
    static auto* registry = new Registry(); // lives as long as the process
    return *registry;
}

std::atomic<bool> g_guard{false};

size_t RoundUp(size_t value, size_t unit)
{
    return (value + unit - 1) / unit * unit;
}

Piece MakePiece(size_t cb, size_t alignment)
{
    Piece piece;
    piece.cb = cb;
    if (!g_guard.load(std::memory_order_relaxed))
    {
        piece.data = std::malloc(cb != 0 ? cb : 1);
        if (piece.data == nullptr)
        {
            throw std::bad_alloc();
        }
        std::memset(piece.data, kFresh, cb);
        return piece;
    }
    const size_t cbAligned = RoundUp(cb, alignment);
    const size_t cbData = RoundUp(cbAligned != 0 ? cbAligned : 1, kPage);
    piece.cbBase = cbData + kPage;
    piece.base = VirtualAlloc(nullptr, piece.cbBase, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (piece.base == nullptr)
    {
        throw std::bad_alloc();
    }
    auto* guard = static_cast<char*>(piece.base) + cbData;
    DWORD before = 0;
    VirtualProtect(guard, kPage, PAGE_NOACCESS, &before);
    piece.data = guard - cbAligned;
    piece.slack = cbAligned - cb;
    std::memset(piece.base, kSlack, cbData);
    std::memset(piece.data, kFresh, cb);
    return piece;
}

bool SlackIntact(const Piece& piece)
{
    const auto* slack = static_cast<const unsigned char*>(piece.data) + piece.cb;
    for (size_t i = 0; piece.base != nullptr && i < piece.slack; ++i)
    {
        if (slack[i] != kSlack)
        {
            return false;
        }
    }
    return true;
}

void DropPiece(const Piece& piece)
{
    if (piece.base == nullptr)
    {
        std::memset(piece.data, kFreed, piece.cb);
        std::free(piece.data);
        return;
    }
    VirtualFree(piece.base, piece.cbBase, MEM_DECOMMIT);
    Registry& registry = TheRegistry();
    std::pair<void*, size_t> oldest{nullptr, 0};
    {
        const std::scoped_lock hold(registry.lock);
        registry.quarantine.emplace_back(piece.base, piece.cbBase);
        if (registry.quarantine.size() > kMaxQuarantine)
        {
            oldest = registry.quarantine.front();
            registry.quarantine.pop_front();
        }
    }
    if (oldest.first != nullptr)
    {
        VirtualFree(oldest.first, 0, MEM_RELEASE);
    }
}

} // namespace

struct Head
{
    std::mutex lock; // guards `pieces`: MAPIAllocateMore may come from several threads
    std::vector<Piece> pieces;
    CLedger::Ticket ticket = 0;
};

void SetGuard(bool guard)
{
    g_guard.store(guard, std::memory_order_relaxed);
}

void* Allocate(size_t cb, size_t alignment, Operation operation, bool counted, Head** headOut)
{
    auto head = std::make_unique<Head>();
    head->pieces.push_back(MakePiece(cb, alignment));
    void* data = head->pieces.front().data;
    if (counted)
    {
        head->ticket = Runtime().Ledger().Hand(LedgerKind::Buffer, "buffer", operation, cb);
    }
    if (headOut != nullptr)
    {
        *headOut = head.get();
    }
    Registry& registry = TheRegistry();
    const std::scoped_lock hold(registry.lock);
    registry.heads[data] = head.release();
    return data;
}

void* AllocateLinked(Head* head, size_t cb, size_t alignment)
{
    Piece piece = MakePiece(cb, alignment);
    const std::scoped_lock hold(head->lock);
    head->pieces.push_back(piece);
    return piece.data;
}

Head* FindHead(const void* pointer)
{
    Registry& registry = TheRegistry();
    const std::scoped_lock hold(registry.lock);
    const auto found = registry.heads.find(pointer);
    return found != registry.heads.end() ? found->second : nullptr;
}

bool Owns(Head* head, const void* pointer)
{
    const std::scoped_lock hold(head->lock);
    for (size_t i = 1; i < head->pieces.size(); ++i)
    {
        if (head->pieces[i].data == pointer)
        {
            return true;
        }
    }
    return false;
}

bool Free(void* pointer, std::string& problem)
{
    Head* head = nullptr;
    {
        Registry& registry = TheRegistry();
        const std::scoped_lock hold(registry.lock);
        const auto found = registry.heads.find(pointer);
        if (found == registry.heads.end())
        {
            problem = "freed a pointer that is no live head of a buffer";
            return false;
        }
        head = found->second;
        registry.heads.erase(found);
    }
    bool intact = true;
    for (const Piece& piece : head->pieces)
    {
        intact = SlackIntact(piece) && intact;
        DropPiece(piece);
    }
    if (head->ticket != 0)
    {
        Runtime().Ledger().Return(head->ticket);
    }
    delete head;
    if (!intact)
    {
        problem = "wrote past the end of a buffer";
    }
    return true;
}

void ForgetAll()
{
    Registry& registry = TheRegistry();
    const std::scoped_lock hold(registry.lock);
    for (const auto& [data, head] : registry.heads)
    {
        head->ticket = 0;
    }
}

} // namespace buffers

CBuffer::CBuffer(size_t cb, Operation operation, bool counted)
    : m_data(buffers::Allocate(cb, 8, operation, counted, &m_head))
{
}

CBuffer::CBuffer(buffers::Head* owner, size_t cb)
    : m_head(owner), m_data(buffers::AllocateLinked(owner, cb, 8)), m_isHead(false)
{
}

CBuffer::~CBuffer()
{
    if (m_data != nullptr && m_isHead)
    {
        std::string problem;
        buffers::Free(m_data, problem);
    }
}

void* CBuffer::More(size_t cb, size_t alignment)
{
    return buffers::AllocateLinked(m_head, cb, alignment);
}

void* CBuffer::Detach()
{
    void* data = m_data;
    m_data = nullptr;
    return data;
}

} // namespace mapistore
