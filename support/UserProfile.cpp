#include "UserProfile.h"

#include "Handle.h"
#include "LogonSystem.h"

namespace
{

constinit CLogonSystem g_logonSystem;
constinit CUserProfile g_userProfile(g_logonSystem);

} // namespace

CUserProfile::~CUserProfile()
{
    if (m_hProfile != nullptr && m_hProfile != HKEY_CURRENT_USER && m_hToken != nullptr)
    {
        m_system.UnloadHive(m_hToken, m_hProfile);
    }
    const CHandle token(m_hToken);
}

HKEY CUserProfile::RootKey() noexcept
{
    return g_userProfile.GetRootKey();
}

HKEY CUserProfile::GetRootKey() noexcept
{
    if (m_hProfile != nullptr)
    {
        return m_hProfile;
    }
    if (!m_system.IsInteractive() && m_system.CanLoadHives())
    {
        CDTCallProcess::GetCurrentLogonUserToken(*this);
        if (m_hToken != nullptr)
        {
            m_hProfile = m_system.LoadHive(m_hToken);
        }
    }
    if (m_hProfile == nullptr)
    {
        m_hProfile = HKEY_CURRENT_USER;
    }
    return m_hProfile;
}
