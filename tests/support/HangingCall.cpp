#include "HangingCall.h"

namespace
{

constexpr DWORD kPatienceMs = 60000;

} // namespace

CHangingCall::CHangingCall(const std::wstring& name)
    : m_reached(CreateEventW(nullptr, TRUE, FALSE, (L"MapiStore." + name + L".reached").c_str())),
      m_goOn(CreateEventW(nullptr, TRUE, FALSE, (L"MapiStore." + name).c_str()))
{
}

CHangingCall::~CHangingCall()
{
    LetGo();
    CloseHandle(m_goOn);
    CloseHandle(m_reached);
}

bool CHangingCall::WaitUntilReached() const
{
    return WaitForSingleObject(m_reached, kPatienceMs) == WAIT_OBJECT_0;
}

void CHangingCall::LetGo() const
{
    SetEvent(m_goOn);
}
