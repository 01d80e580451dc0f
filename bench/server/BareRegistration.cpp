#include "BareRegistration.h"

#include <windows.h>

#include "BareIdentity.h"

namespace
{
std::wstring ClassKey()
{
    return std::wstring(L"Software\\Classes\\CLSID\\") + kBareClassText;
}
} // namespace

CBareRegistration::CBareRegistration(const std::wstring& path)
{
    const std::wstring key = ClassKey() + L"\\LocalServer32";
    RegSetKeyValueW(HKEY_LOCAL_MACHINE,
                    key.c_str(),
                    nullptr,
                    REG_SZ,
                    path.c_str(),
                    static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
}

CBareRegistration::~CBareRegistration()
{
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClassKey().c_str());
}
