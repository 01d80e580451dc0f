#pragma once

#include "Object.h"

namespace mapistore
{

/// IProfAdmin over the profiles of the store's document, which only the store's owner changes.
class CProfileAdmin final : public CObject<IProfAdmin>
{
public:
    explicit CProfileAdmin(Operation madeBy);

    bool Supports(REFIID iid) const override;

    HRESULT WINAPI GetLastError(HRESULT hr, ULONG flags, MAPIERROR** error) override;
    HRESULT WINAPI GetProfileTable(ULONG flags, ::IMAPITable** out) override;
    HRESULT WINAPI CreateProfile(LPTSTR name,
                                 LPTSTR password,
                                 ULONG_PTR window,
                                 ULONG flags) override;
    HRESULT WINAPI DeleteProfile(LPTSTR name, ULONG flags) override;
    HRESULT WINAPI ChangeProfilePassword(LPTSTR name,
                                         LPTSTR oldPassword,
                                         LPTSTR newPassword,
                                         ULONG flags) override;
    HRESULT WINAPI CopyProfile(
        LPTSTR oldName, LPTSTR password, LPTSTR newName, ULONG_PTR window, ULONG flags) override;
    HRESULT WINAPI RenameProfile(
        LPTSTR oldName, LPTSTR password, LPTSTR newName, ULONG_PTR window, ULONG flags) override;
    HRESULT WINAPI SetDefaultProfile(LPTSTR name, ULONG flags) override;
    HRESULT WINAPI AdminServices(LPTSTR name,
                                 LPTSTR password,
                                 ULONG_PTR window,
                                 ULONG flags,
                                 IMsgServiceAdmin** out) override;

protected:
    void Dispose() noexcept override {}

private:
    HRESULT NoSupport(Operation operation) noexcept;
};

} // namespace mapistore
