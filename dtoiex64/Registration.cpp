#include "Registration.h"

#include <oleauto.h>

#include <array>
#include <new>
#include <optional>
#include <string_view>

#include "ComRef.h"
#include "NarrowText.h"
#include "Registrar.h"

// The import library has these two; the toolchain's header does not.
extern "C"
{
    HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* file, OLECHAR* helpFolder);
    HRESULT WINAPI UnRegisterTypeLibForUser(
        REFGUID library, WORD majorVersion, WORD minorVersion, LCID locale, SYSKIND system);
}

namespace
{

constexpr const wchar_t* kTypeLibrary = L"{A470B11E-041B-407E-BE88-C2039972F999}";
constexpr std::array<const wchar_t*, 2> kInterfaces = {
    L"{BCEDA04E-FDD7-4E90-B0C6-A9653E6B3F58}",
    L"{F912582E-FB94-4AFD-89F9-5FC9BB6EC51F}",
};

/// Empty when the module has no such script.
std::string ScriptText(HMODULE module, UINT number)
{
    HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(number), L"REGISTRY");
    const HGLOBAL loaded = found != nullptr ? LoadResource(module, found) : nullptr;
    const void* const text = loaded != nullptr ? LockResource(loaded) : nullptr;
    return text != nullptr
               ? std::string(static_cast<const char*>(text), SizeofResource(module, found))
               : std::string();
}

/// A path with blanks is quoted, or the system would try to start what stands before the first one.
std::wstring CommandOf(const std::wstring& file)
{
    return file.find(L' ') != std::wstring::npos ? L'"' + file + L'"' : file;
}

/// All scripts of the registration as trees.
HRESULT ReadScripts(const RegistrationData& data, std::vector<ScriptTree>& trees)
{
    ScriptReplacements replacements = data.replacements;
    replacements[L"MODULE"] = CommandOf(data.file);
    for (const UINT number : data.scripts)
    {
        const std::string text = ScriptText(data.module, number);
        if (text.empty())
        {
            return HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND);
        }
        if (ParseRegistrarScript(WidenText(text), replacements, trees))
        {
            return DISP_E_EXCEPTION; // a broken script in the executable
        }
    }
    return S_OK;
}

std::wstring FileBeside(const std::wstring& file, std::wstring_view extension)
{
    const std::size_t dot = file.find_last_of(L".\\");
    const bool hasExtension = dot != std::wstring::npos && file[dot] == L'.';
    std::wstring beside = hasExtension ? file.substr(0, dot) : file;
    return beside.append(extension);
}

/// `found` is the file that carries the library.
HRESULT LoadLibraryOfFile(const std::wstring& file, CComRef<ITypeLib>& library, std::wstring& found)
{
    found = file;
    HRESULT hr = LoadTypeLibEx(found.c_str(), REGKIND_NONE, library.Put());
    if (FAILED(hr))
    {
        found = FileBeside(file, L".tlb");
        hr = LoadTypeLibEx(found.c_str(), REGKIND_NONE, library.Put());
    }
    return hr;
}

HRESULT RegisterLibrary(const std::wstring& file, bool perUser)
{
    CComRef<ITypeLib> library;
    std::wstring found;
    const HRESULT hr = LoadLibraryOfFile(file, library, found);
    if (FAILED(hr))
    {
        return hr;
    }
    std::wstring folder = found.substr(0, found.find_last_of(L'\\'));
    return perUser ? RegisterTypeLibForUser(library.Get(), found.data(), folder.data())
                   : RegisterTypeLib(library.Get(), found.data(), folder.data());
}

HRESULT UnregisterLibrary(const std::wstring& file, bool perUser)
{
    CComRef<ITypeLib> library;
    std::wstring found;
    HRESULT hr = LoadLibraryOfFile(file, library, found);
    TLIBATTR* attributes = nullptr;
    if (SUCCEEDED(hr))
    {
        hr = library->GetLibAttr(&attributes);
    }
    if (FAILED(hr))
    {
        return hr;
    }
    const auto unregister = perUser ? UnRegisterTypeLibForUser : UnRegisterTypeLib;
    // Answers TYPE_E_REGISTRYACCESS when nothing is registered, which is what is wanted.
    unregister(attributes->guid,
               attributes->wMajorVerNum,
               attributes->wMinorVerNum,
               attributes->lcid,
               attributes->syskind);
    library->ReleaseTLibAttr(attributes);
    return S_OK;
}

/// Where the classes stand that this registration wrote. The classes root itself has no second view.
struct ClassesKey
{
    HKEY root;
    const wchar_t* path;
};

ClassesKey ClassesOf(bool perUser)
{
    return perUser ? ClassesKey{HKEY_CURRENT_USER, L"Software\\Classes"}
                   : ClassesKey{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes"};
}

/// Removes `name` below the classes' key `parent`, in one of the two views. What is not there is no
/// failure.
HRESULT
RemoveClassesTree(const ClassesKey& classes,
                  const wchar_t* parent,
                  const wchar_t* name,
                  REGSAM view)
{
    const std::wstring path = std::wstring(classes.path) + L'\\' + parent;
    HKEY key = nullptr;
    LSTATUS status =
        RegOpenKeyExW(classes.root, path.c_str(), 0, KEY_READ | KEY_WRITE | DELETE | view, &key);
    if (status == ERROR_SUCCESS)
    {
        status = RegDeleteTreeW(key, name);
        RegCloseKey(key);
    }
    return status == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

void KeepFirst(HRESULT& first, HRESULT hr)
{
    if (SUCCEEDED(first))
    {
        first = hr;
    }
}

/// The type library's own keys: UnRegisterTypeLib leaves the interfaces where an earlier deletion
/// took the library's key, and the view of 32-bit clients has interfaces of its own.
HRESULT SweepTypeInformation(bool perUser)
{
    const ClassesKey classes = ClassesOf(perUser);
    HRESULT first = RemoveClassesTree(classes, L"TypeLib", kTypeLibrary, KEY_WOW64_64KEY);
    for (const REGSAM view : {REGSAM{KEY_WOW64_64KEY}, REGSAM{KEY_WOW64_32KEY}})
    {
        for (const wchar_t* const iid : kInterfaces)
        {
            KeepFirst(first, RemoveClassesTree(classes, L"Interface", iid, view));
        }
    }
    return first;
}

HRESULT Register(const RegistrationData& data, bool perUser)
{
    std::vector<ScriptTree> trees;
    HRESULT hr = ReadScripts(data, trees);
    if (SUCCEEDED(hr))
    {
        hr = RunRegistrarTrees(trees);
    }
    return FAILED(hr) ? hr : RegisterLibrary(data.file, perUser);
}

HRESULT Unregister(const RegistrationData& data, bool perUser)
{
    std::vector<ScriptTree> trees;
    HRESULT first = ReadScripts(data, trees);
    KeepFirst(first, UndoRegistrarTrees(trees));
    KeepFirst(first, UnregisterLibrary(data.file, perUser));
    KeepFirst(first, SweepTypeInformation(perUser));
    return first;
}

HRESULT InView(const RegistrationData& data,
               bool perUser,
               HRESULT (*action)(const RegistrationData& data, bool perUser)) noexcept
try
{
    std::optional<CPerUserClasses> view;
    if (perUser)
    {
        view.emplace();
        if (FAILED(view->Result()))
        {
            return view->Result();
        }
    }
    return action(data, perUser);
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

} // namespace

HRESULT RegisterServer(const RegistrationData& data, bool perUser) noexcept
{
    return InView(data, perUser, Register);
}

HRESULT UnregisterServer(const RegistrationData& data, bool perUser) noexcept
{
    return InView(data, perUser, Unregister);
}

void DeleteMachineKeys() noexcept
{
    constexpr std::array<const wchar_t*, 7> kKeys = {
        L"SOFTWARE\\Classes\\AppID\\{D0418E03-DEDF-40BE-8DCD-9189B3197D23}",
        L"SOFTWARE\\Classes\\AppID\\dtOIEx64.EXE",
        L"SOFTWARE\\Classes\\TypeLib\\{A470B11E-041B-407E-BE88-C2039972F999}",
        L"SOFTWARE\\Classes\\dtOIEx64.MapiClient.1",
        L"SOFTWARE\\Classes\\dtOIEx64.MapiClient",
        L"SOFTWARE\\Classes\\Interface\\{BCEDA04E-FDD7-4E90-B0C6-A9653E6B3F58}",
        L"SOFTWARE\\Classes\\Interface\\{F912582E-FB94-4AFD-89F9-5FC9BB6EC51F}",
    };
    for (const wchar_t* const key : kKeys)
    {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, key);
    }
}
