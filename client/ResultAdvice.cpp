#include "ResultAdvice.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>

namespace dtclient
{
namespace
{
struct KnownCode
{
    std::uint32_t code;
    const char* meaning;
    const char* remedy;
};

constexpr const char* kRegister =
    "register the server once: \"dtOIEx64.exe -RegServer\" as administrator for all users, or "
    "\"dtOIEx64.exe -RegServerPerUser\" for this one";
constexpr const char* kRestart =
    "start the command again; if it happens twice, send the files of the directory "
    "\"%APPDATA%\\Talvo Connect\" (trace, crash copy, dump) to support";

constexpr std::array<KnownCode, 16> kCallCodes = {{
    {0x80004002, "the object does not offer the interface", kRegister},
    {0x80004005,
     "the server refused the call",
     "check the arguments; the trace file \"strato-mapi.txt\" in \"%APPDATA%\\Talvo Connect\" says "
     "why"},
    {0x80010105, "the server failed inside the call", kRestart},
    {0x80010108, "the server has gone away", kRestart},
    {0x80040154, "the class is not registered", kRegister},
    {0x80040155, "the interface is not registered", kRegister},
    {0x800401F3, "the name of the class is not registered", kRegister},
    {0x80040200, "the connection is unknown to the server", kRestart},
    {0x80040202, "the server does not accept the event sink", kRegister},
    {0x80070002,
     "the registered program file does not exist",
     "register the server again from the place where it now stands: \"dtOIEx64.exe -RegServer\""},
    {0x80070005,
     "access denied",
     "run this program as the same user and with the same rights as the server"},
    {0x8007000E, "not enough memory", "close other programs and try again"},
    {0x800706BA, "the server process has ended", kRestart},
    {0x800706BE, "the server process ended during the call", kRestart},
    {0x80080005,
     "the server did not start, or ended before it could answer",
     "start \"dtOIEx64.exe\" by hand to see whether it runs; a scanner that blocks it and a "
     "missing "
     "file beside it are the usual causes"},
    {0x8001010A, "the server is busy", "wait for other clients to finish and try again"},
}};

constexpr std::array<KnownCode, 6> kInitializeCodes = {{
    {0x00000001,
     "the server does not know this mail system",
     "use the mail type of Outlook, which is 1"},
    {0x80004005, "the mail system is known but not supported here", "use the mail type of Outlook"},
    {0x80080002,
     "no mail client is installed, or its library cannot be loaded",
     "install a 64-bit mail client, start it once, and make it the default mail client; the value "
     "under HKLM\\Software\\Clients\\Mail names it"},
    {0x80080003,
     "the user has no default mail profile",
     "start the mail client once and let it make a profile, or choose a default one under Mail in "
     "the control panel"},
    {0x80080004,
     "logon, the user's identity or the default store failed",
     "start the mail client and see whether it opens its mailbox; the trace file "
     "\"strato-mapi.txt\" in \"%APPDATA%\\Talvo Connect\" names the step"},
    {0x8007000E, "the server ran out of memory", "close other programs and try again"},
}};

ResultAdvice Find(std::span<const KnownCode> codes, std::uint32_t code)
{
    const auto found = std::find_if(
        codes.begin(), codes.end(), [code](const auto& row) { return row.code == code; });
    if (found == codes.end())
    {
        return {"a code that is not expected here",
                "look the code up among the Windows result codes, and see the trace file "
                "\"strato-mapi.txt\" in \"%APPDATA%\\Talvo Connect\""};
    }
    return {found->meaning, found->remedy};
}
} // namespace

std::string CodeText(std::uint32_t code)
{
    std::array<char, 16> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), "0x%08X", code);
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

ResultAdvice AdviceForCall(std::uint32_t code)
{
    return Find(kCallCodes, code);
}

ResultAdvice AdviceForInitialize(std::uint32_t code)
{
    return Find(kInitializeCodes, code);
}

std::string FailureText(const std::string& tried, std::uint32_t code, const ResultAdvice& advice)
{
    return tried + " failed with " + CodeText(code) + ": " + advice.meaning +
           ".\nWhat to do: " + advice.remedy + ".\n";
}

std::string TroubleText(const std::string& tried, const ResultAdvice& advice)
{
    return tried + ": " + advice.meaning + ".\nWhat to do: " + advice.remedy + ".\n";
}
} // namespace dtclient
