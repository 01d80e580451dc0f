#pragma once

#include <cstdint>
#include <functional>

namespace dtclient
{
/// Makes the server's object by `create`, an HRESULT's bits as its answer. A server that is just ending
/// may still be found, and then answers nothing more: the next try starts a new one. So an answer that
/// says "has ended" or "is stopping" is followed by `pause` and another try, four times at the most;
/// every other answer stands. Returns the last answer.
std::uint32_t CreateBehindAnEndingServer(const std::function<std::uint32_t()>& create,
                                         const std::function<void()>& pause);
} // namespace dtclient
