#pragma once

#include <cstddef>

#include "Ledger.h"
#include "Value.h"

namespace mapistore
{

/// The allocator behind MAPIAllocateBuffer, MAPIAllocateMore and MAPIFreeBuffer.
///
/// Every head is known by its address, so that a foreign pointer, a linked allocation or a pointer
/// freed before is refused and noted. In guard mode each allocation ends at an inaccessible page
/// and becomes inaccessible when it is freed: reading past a value or after its release faults.
/// Thread: any.
namespace buffers
{

struct Head;

/// Chosen before the first allocation of a run; later allocations follow, earlier ones keep their
/// way.
void SetGuard(bool guard);

/// `alignment` is 1, 2 or 8: text and bytes may end exactly at the guard page.
void* Allocate(size_t cb, size_t alignment, Operation operation, bool counted, Head** head);
void* AllocateLinked(Head* head, size_t cb, size_t alignment);
Head* FindHead(const void* pointer);
/// True when the pointer is a linked allocation of that head.
bool Owns(Head* head, const void* pointer);
/// False, with what is wrong, for a pointer that is no live head. `problem` may be set in either
/// case.
bool Free(void* pointer, std::string& problem);

/// At the last MAPIUninitialize: what is left stays allocated, since somebody may still hold it,
/// but is forgotten here.
void ForgetAll();

} // namespace buffers

/// A head allocation under construction: freed unless it is handed over.
class CBuffer
{
public:
    CBuffer(size_t cb, Operation operation, bool counted = true);
    /// An allocation linked to a head that somebody else owns: never freed here.
    CBuffer(buffers::Head* owner, size_t cb);
    ~CBuffer();
    CBuffer(const CBuffer&) = delete;
    CBuffer& operator=(const CBuffer&) = delete;

    void* Data() const { return m_data; }
    template <class T>
    T* As() const
    {
        return static_cast<T*>(m_data);
    }
    void* More(size_t cb, size_t alignment = 8);
    /// Gives the allocation to the caller of the library.
    void* Detach();

private:
    buffers::Head* m_head = nullptr;
    void* m_data;
    bool m_isHead = true;
};

/// Writes `value` into `out`, with whatever it points to linked to `buffer`.
///
/// `tag` is the tag asked for; its type may be PT_UNSPECIFIED, or the 8-bit or wide form of the
/// text, or one of the forms of HTML. A value that cannot be given in that form, or does not fit
/// `limit` bytes, becomes PT_ERROR. Returns false for PT_ERROR.
bool WriteValue(CBuffer& buffer,
                SPropValue& out,
                const CValue* value,
                ULONG tag,
                bool unicode,
                std::uint64_t limit);

/// Writes text in the width asked for.
void* WriteText(CBuffer& buffer, std::wstring_view text, bool unicode);

/// A copy of a value that a caller gave. Throws `CMapiError` for a type that cannot be stored and
/// for a null pointer.
CValue ReadValue(const SPropValue& value);

} // namespace mapistore
