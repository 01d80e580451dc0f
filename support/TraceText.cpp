#include "TraceText.h"

#include <string>

int TraceCode(TL_SDK::TLLoggerLevel level) noexcept
{
    switch (level)
    {
    case TL_SDK::TLLoggerLevelFailure:
        return 8;
    case TL_SDK::TLLoggerLevelWarning:
        return 4;
    default:
        return 2;
    }
}

std::pmr::string RawTraceText(std::string_view prefix,
                              std::span<const TracePair> pairs,
                              std::pmr::memory_resource* memory)
{
    std::pmr::string text(memory);
    std::size_t length = prefix.size() + 2;
    for (const TracePair& pair : pairs)
    {
        length += pair.value.Text().size() + 1;
    }
    text.reserve(length);
    text.append(prefix).push_back(' ');
    for (const TracePair& pair : pairs)
    {
        if (pair.name != nullptr)
        {
            text.append(pair.name).push_back('=');
        }
        text.append(pair.value.Text()).push_back(',');
    }
    text.push_back('\n');
    return text;
}

void ForEachTracePiece(std::string_view text, const std::function<void(const char*)>& send)
{
    std::size_t at = 0;
    for (; text.size() - at > kTracePieceBytes; at += kTracePieceBytes)
    {
        send(std::string(text.substr(at, kTracePieceBytes)).c_str());
    }
    send(text.data() + at);
}
