#include "Registrar.h"

#include <utility>

namespace
{

/// Owner of one open registry key.
class CRegKey final
{
public:
    CRegKey() noexcept = default;
    CRegKey(const CRegKey&) = delete;
    CRegKey& operator=(const CRegKey&) = delete;
    ~CRegKey()
    {
        if (m_key != nullptr)
        {
            RegCloseKey(m_key);
        }
    }

    LSTATUS Create(HKEY parent, const wchar_t* name) noexcept
    {
        return RegCreateKeyExW(
            parent, name, 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &m_key, nullptr);
    }
    LSTATUS Open(HKEY parent, const wchar_t* name) noexcept
    {
        return RegOpenKeyExW(parent, name, 0, KEY_READ | KEY_WRITE, &m_key);
    }
    [[nodiscard]] HKEY Get() const noexcept { return m_key; }

private:
    HKEY m_key = nullptr;
};

HKEY HandleOf(ScriptRoot root) noexcept
{
    switch (root)
    {
    case ScriptRoot::CurrentUser:
        return HKEY_CURRENT_USER;
    case ScriptRoot::LocalMachine:
        return HKEY_LOCAL_MACHINE;
    case ScriptRoot::Users:
        return HKEY_USERS;
    case ScriptRoot::CurrentConfig:
        return HKEY_CURRENT_CONFIG;
    case ScriptRoot::ClassesRoot:
        break;
    }
    return HKEY_CLASSES_ROOT;
}

LSTATUS SetBytes(
    HKEY key, const std::wstring& name, DWORD type, const void* data, std::size_t cb) noexcept
{
    return RegSetValueExW(key,
                          name.empty() ? nullptr : name.c_str(),
                          0,
                          type,
                          static_cast<const BYTE*>(data),
                          static_cast<DWORD>(cb));
}

LSTATUS SetValue(HKEY key, const ScriptValue& value) noexcept
{
    const std::size_t cbText = (value.text.size() + 1) * sizeof(wchar_t);
    switch (value.kind)
    {
    case ScriptValueKind::ExpandText:
        return SetBytes(key, value.name, REG_EXPAND_SZ, value.text.c_str(), cbText);
    case ScriptValueKind::MultiText:
        return SetBytes(key, value.name, REG_MULTI_SZ, value.text.c_str(), cbText);
    case ScriptValueKind::Number:
        return SetBytes(key, value.name, REG_DWORD, &value.number, sizeof value.number);
    case ScriptValueKind::Bytes:
        return SetBytes(key, value.name, REG_BINARY, value.bytes.data(), value.bytes.size());
    case ScriptValueKind::Text:
        break;
    }
    return SetBytes(key, value.name, REG_SZ, value.text.c_str(), cbText);
}

/// Removes a key with all below it; one that is not there counts as removed.
LSTATUS RemoveTree(HKEY parent, const std::wstring& name) noexcept
{
    const LSTATUS status = RegDeleteTreeW(parent, name.c_str());
    return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

LSTATUS WriteKey(HKEY parent, const ScriptKey& key) noexcept
{
    if (key.deleteOnly || key.forceRemove)
    {
        const LSTATUS status = RemoveTree(parent, key.name);
        if (status != ERROR_SUCCESS || key.deleteOnly)
        {
            return status;
        }
    }
    CRegKey handle;
    LSTATUS status = handle.Create(parent, key.name.c_str());
    for (std::size_t i = 0; status == ERROR_SUCCESS && i < key.values.size(); i++)
    {
        status = SetValue(handle.Get(), key.values[i]);
    }
    for (std::size_t i = 0; status == ERROR_SUCCESS && i < key.keys.size(); i++)
    {
        status = WriteKey(handle.Get(), key.keys[i]);
    }
    return status;
}

void KeepFirst(LSTATUS& first, LSTATUS status) noexcept
{
    if (first == ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND)
    {
        first = status;
    }
}

bool HasSubKeys(HKEY key) noexcept
{
    DWORD count = 0;
    const LSTATUS status = RegQueryInfoKeyW(key,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            &count,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr);
    return status != ERROR_SUCCESS || count != 0;
}

LSTATUS UndoKey(HKEY parent, const ScriptKey& key) noexcept
{
    if (key.deleteOnly)
    {
        return ERROR_SUCCESS;
    }
    if (key.forceRemove && !key.noRemove)
    {
        return RemoveTree(parent, key.name);
    }
    LSTATUS first = ERROR_SUCCESS;
    bool empty = false;
    {
        CRegKey handle;
        const LSTATUS status = handle.Open(parent, key.name.c_str());
        if (status != ERROR_SUCCESS)
        {
            return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
        }
        for (const ScriptKey& child : key.keys)
        {
            KeepFirst(first, UndoKey(handle.Get(), child));
        }
        for (const ScriptValue& value : key.values)
        {
            KeepFirst(first, RegDeleteValueW(handle.Get(), value.name.c_str()));
        }
        empty = !HasSubKeys(handle.Get());
    }
    if (!key.noRemove && empty)
    {
        KeepFirst(first, RegDeleteKeyW(parent, key.name.c_str()));
    }
    return first;
}

} // namespace

HRESULT RunRegistrarTrees(const std::vector<ScriptTree>& trees) noexcept
{
    for (const ScriptTree& tree : trees)
    {
        for (const ScriptKey& key : tree.keys)
        {
            const LSTATUS status = WriteKey(HandleOf(tree.root), key);
            if (status != ERROR_SUCCESS)
            {
                UndoRegistrarTrees(trees);
                return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
            }
        }
    }
    return S_OK;
}

HRESULT UndoRegistrarTrees(const std::vector<ScriptTree>& trees) noexcept
{
    LSTATUS first = ERROR_SUCCESS;
    for (const ScriptTree& tree : trees)
    {
        for (const ScriptKey& key : tree.keys)
        {
            KeepFirst(first, UndoKey(HandleOf(tree.root), key));
        }
    }
    return HRESULT_FROM_WIN32(static_cast<DWORD>(first));
}

CPerUserClasses::CPerUserClasses() noexcept : m_result(S_OK)
{
    CRegKey user;
    LSTATUS status = user.Create(HKEY_CURRENT_USER, L"Software\\Classes");
    if (status == ERROR_SUCCESS)
    {
        status = RegOverridePredefKey(HKEY_CLASSES_ROOT, user.Get());
    }
    m_result = HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

CPerUserClasses::~CPerUserClasses()
{
    if (SUCCEEDED(m_result))
    {
        RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    }
}
