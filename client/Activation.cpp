#include "Activation.h"

#include <algorithm>
#include <array>

namespace dtclient
{
namespace
{
constexpr int kMoreTries = 4;
// RPC_E_DISCONNECTED, RPC_S_SERVER_UNAVAILABLE, RPC_S_CALL_FAILED, CO_E_SERVER_STOPPING
constexpr std::array<std::uint32_t, 4> kEnding = {0x80010108, 0x800706BA, 0x800706BE, 0x80080008};
} // namespace

std::uint32_t CreateBehindAnEndingServer(const std::function<std::uint32_t()>& create,
                                         const std::function<void()>& pause)
{
    std::uint32_t code = create();
    for (int tries = 0; tries < kMoreTries && std::ranges::find(kEnding, code) != kEnding.end();
         ++tries)
    {
        pause();
        code = create();
    }
    return code;
}
} // namespace dtclient
