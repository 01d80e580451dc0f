#include "TraceLibrary.h"

#include <algorithm>
#include <array>

namespace tlvtrace
{
namespace
{
constexpr unsigned kFailureCode = 8;
constexpr std::string_view kContinued = "(continued) ";

bool IsAscii(std::string_view text)
{
    // Looks at all letters, which the compiler can do for many at once.
    unsigned char all = 0;
    for (const char letter : text)
    {
        all |= static_cast<unsigned char>(letter);
    }
    return all < 0x80;
}

// Apart from its caller, so that the common case does not pay for the buffers on its stack.
__attribute__((noinline)) void AddConverted(CTraceQueue& queue,
                                            std::string_view head,
                                            std::string_view body,
                                            bool hurry)
{
    std::array<wchar_t, kMaxText> wide;
    std::array<char, 3 * kMaxText> utf8;
    const int units = MultiByteToWideChar(CP_ACP,
                                          0,
                                          body.data(),
                                          static_cast<int>(body.size()),
                                          wide.data(),
                                          static_cast<int>(wide.size()));
    const int bytes = WideCharToMultiByte(CP_UTF8,
                                          0,
                                          wide.data(),
                                          units,
                                          utf8.data(),
                                          static_cast<int>(utf8.size()),
                                          nullptr,
                                          nullptr);
    queue.Add(
        head, std::string_view(utf8.data(), static_cast<std::size_t>(std::max(bytes, 0))), hurry);
}
} // namespace

CTraceLibrary::CTraceLibrary(ITraceStore& store, const QueueLimits& limits)
    : m_queue(store, limits), m_continuedSlot(TlsAlloc())
{
}

void CTraceLibrary::Write(const TraceRecord& record) noexcept
{
    const DWORD lastError = GetLastError();
    char head[kMaxHead];
    std::size_t length =
        WriteHead(head, record, m_clock.Now(), GetCurrentProcessId(), GetCurrentThreadId());
    const std::string_view text = TextOf(record);
    if (m_continuedSlot != TLS_OUT_OF_INDEXES)
    {
        const bool continues = TlsGetValue(m_continuedSlot) != nullptr;
        if (continues && length + kContinued.size() < sizeof head)
        {
            length += kContinued.copy(head + length, kContinued.size());
        }
        if (continues == EndsLine(text))
        {
            TlsSetValue(m_continuedSlot, continues ? nullptr : this);
        }
    }
    const std::string_view body = BodyOf(text);
    // A failure may be the last thing that this process tells.
    const bool hurry = record.code == kFailureCode;
    if (IsAscii(body))
    {
        m_queue.Add(std::string_view(head, length), body, hurry);
    }
    else
    {
        AddConverted(m_queue, std::string_view(head, length), body, hurry);
    }
    SetLastError(lastError);
}
} // namespace tlvtrace
