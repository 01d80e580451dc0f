#include "MailCtrl.h"

#include <algorithm>

#include "BringUpResult.h"
#include "RegisterUtil.h"
#include "Trace.h"

namespace
{

constexpr DWORD kInstallTextBytes = 520;

} // namespace

ULONG CMailCtrl::Init()
{
    constexpr const char* kFunction = "CMailCtrl::Init";
    if (m_bInitialized != 0)
    {
        SEND_TRACE(3,
                   kFunction,
                   "Has been initialized already, the last initialize result[0x %x]",
                   static_cast<unsigned>(m_hrInit));
        return m_hrInit;
    }
    m_bInitialized = 1;

    // One character more than is read: a text that fills the buffer comes without its terminator.
    WCHAR text[kInstallTextBytes / sizeof(WCHAR) + 1] = {};
    const bool isRead = CRegisterUtil::ReadReg(
        HKEY_LOCAL_MACHINE, m_strInstallKey.c_str(), nullptr, text, kInstallTextBytes, nullptr, 0);
    if (!isRead || text[0] == 0)
    {
        SEND_TRACE(0, kFunction, "OUTLOOK is not installed");
        m_hrInit = BringUpNoLibrary;
        return m_hrInit;
    }
    m_hrInit = BringUpReady;
    return m_hrInit;
}

ULONG CMailCtrl::RegisterInitType(ULONG initType)
{
    if (std::find(m_InitTypes.begin(), m_InitTypes.end(), initType) != m_InitTypes.end())
    {
        return 1;
    }
    m_InitTypes.push_back(initType);
    return 0;
}
