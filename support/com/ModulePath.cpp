#include "ModulePath.h"

std::wstring ModulePath(HMODULE module)
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;)
    {
        const DWORD cch = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (cch < path.size())
        {
            path.resize(cch);
            return path;
        }
        path.resize(path.size() * 2); // it was cut
    }
}
