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

constexpr const wchar_t* kTypeLibraryKey = L"TypeLib\\{A470B11E-041B-407E-BE88-C2039972F999}";
constexpr std::array<const wchar_t*, 2> kInterfaceKeys = {
    L"Interface\\{BCEDA04E-FDD7-4E90-B0C6-A9653E6B3F58}",
    L"Interface\\{F912582E-FB94-4AFD-89F9-5FC9BB6EC51F}",
};

/// Empty when the module has no such script.
std::string ScriptText(HMODULE module, UINT number)
{
    const HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(number), L"REGISTRY");
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

/// Removes a key below one of the classes root's containers, `path` being "Container\\{id}". What is
/// not there is no failure.
/// `view` names one of the machine's two views; 0 goes where the user's own view leads. It counts for
/// the opening of a container only: the classes root itself is open before, and has no view.
HRESULT RemoveClassesTree(std::wstring_view path, REGSAM view)
{
    const std::size_t cut = path.find(L'\\');
    const std::wstring container(path.substr(0, cut));
    const std::wstring key(path.substr(cut + 1));
    HKEY parent = nullptr;
    LSTATUS status = RegOpenKeyExW(
        HKEY_CLASSES_ROOT, container.c_str(), 0, KEY_READ | KEY_WRITE | DELETE | view, &parent);
    if (status == ERROR_SUCCESS)
    {
        status = RegDeleteTreeW(parent, key.c_str());
        RegCloseKey(parent);
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
/// took the library's key, and the view of 32-bit clients has interfaces of its own. The user's view
/// has no such parts, and naming one would lead past it to the machine's.
HRESULT SweepTypeInformation(bool perUser)
{
    constexpr REGSAM kMachineViews[] = {KEY_WOW64_64KEY, KEY_WOW64_32KEY};
    constexpr REGSAM kUserView[] = {0};
    HRESULT first = S_OK;
    for (const REGSAM view : perUser ? std::span<const REGSAM>(kUserView) : kMachineViews)
    {
        KeepFirst(first, RemoveClassesTree(kTypeLibraryKey, view));
        for (const wchar_t* const key : kInterfaceKeys)
        {
            KeepFirst(first, RemoveClassesTree(key, view));
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
