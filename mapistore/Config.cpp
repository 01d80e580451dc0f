#include "Config.h"

#include <map>
#include <mutex>
#include <optional>

namespace mapistore
{
namespace
{

constexpr const wchar_t* kKey = L"Software\\MapiStore";

struct Known
{
    const wchar_t* name;
    const wchar_t* variable;
};

constexpr Known kKnown[] = {{L"Folder", L"MAPISTORE_FOLDER"},
                            {L"Ledger", L"MAPISTORE_LEDGER"},
                            {L"Faults", L"MAPISTORE_FAULTS"},
                            {L"Guard", L"MAPISTORE_GUARD"},
                            {L"Watch", L"MAPISTORE_WATCH"}};

std::mutex g_overrideLock; // guards the map below

std::map<std::wstring, std::wstring>& Overrides()
{
    static auto* overrides = new std::map<std::wstring, std::wstring>(); // never destroyed
    return *overrides;
}

std::optional<std::wstring> FromEnvironment(const wchar_t* variable)
{
    const DWORD needed = GetEnvironmentVariableW(variable, nullptr, 0);
    if (needed == 0)
    {
        return std::nullopt;
    }
    std::wstring value(needed, L'\0');
    value.resize(GetEnvironmentVariableW(variable, value.data(), needed));
    return value;
}

std::optional<std::wstring> FromRegistry(HKEY root, const wchar_t* name)
{
    DWORD cb = 0;
    // Takes REG_EXPAND_SZ as well, and expands it; asked for by name that type is refused.
    constexpr DWORD kTypes = RRF_RT_REG_SZ;
    if (RegGetValueW(root, kKey, name, kTypes, nullptr, nullptr, &cb) != ERROR_SUCCESS)
    {
        return std::nullopt;
    }
    std::wstring value(cb / sizeof(wchar_t) + 1, L'\0');
    cb = static_cast<DWORD>(value.size() * sizeof(wchar_t));
    if (RegGetValueW(root, kKey, name, kTypes, nullptr, value.data(), &cb) != ERROR_SUCCESS)
    {
        return std::nullopt;
    }
    value.resize(wcslen(value.c_str()));
    return value;
}

std::optional<std::wstring> Lookup(const Known& known)
{
    {
        const std::scoped_lock hold(g_overrideLock);
        const auto found = Overrides().find(known.name);
        if (found != Overrides().end())
        {
            return found->second;
        }
    }
    std::optional<std::wstring> value = FromEnvironment(known.variable);
    if (!value)
    {
        value = FromRegistry(HKEY_CURRENT_USER, known.name);
    }
    return value ? value : FromRegistry(HKEY_LOCAL_MACHINE, known.name);
}

bool IsOn(const std::optional<std::wstring>& value, bool otherwise)
{
    return value ? *value != L"0" : otherwise;
}

} // namespace

bool OverrideConfig(const wchar_t* name, const wchar_t* value)
{
    for (const Known& known : kKnown)
    {
        if (name != nullptr && wcscmp(known.name, name) == 0)
        {
            const std::scoped_lock hold(g_overrideLock);
            if (value == nullptr)
            {
                Overrides().erase(name);
            }
            else
            {
                Overrides()[name] = value;
            }
            return true;
        }
    }
    return false;
}

Config ReadConfig()
{
    Config config;
    config.folder = Lookup(kKnown[0]).value_or(L"");
    config.ledger = Lookup(kKnown[1]).value_or(L"");
    config.faults = Lookup(kKnown[2]).value_or(L"");
    config.guard = IsOn(Lookup(kKnown[3]), false);
    config.watch = IsOn(Lookup(kKnown[4]), true);
    return config;
}

} // namespace mapistore
