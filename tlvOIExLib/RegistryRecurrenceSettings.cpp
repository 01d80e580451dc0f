#include "RegistryRecurrenceSettings.h"

#include "RegisterUtil.h"

namespace
{

constexpr const WCHAR* kDeskToolsKey = L"SOFTWARE\\Talvo\\DeskTools";

// Set by the build, see DT_KEEP_ALL_SITE_NAME in CMakeLists.txt; empty matches no site.
constexpr const WCHAR* kDefaultKeepAllSiteName = DT_KEEP_ALL_SITE_NAME;

WString UserText(const WCHAR* valueName)
{
    WString text;
    ReadRegString(HKEY_CURRENT_USER, kDeskToolsKey, valueName, text, 0);
    return text;
}

class CRegistryRecurrenceSettings final : public IRecurrenceSettings
{
public:
    [[nodiscard]] WString SiteName() const override { return UserText(L"SiteName"); }

    [[nodiscard]] WString KeepAllSiteName() const override
    {
        WString name = UserText(L"KeepAllSiteName");
        return name.empty() ? WString(kDefaultKeepAllSiteName) : name;
    }
};

} // namespace

const IRecurrenceSettings& RegistryRecurrenceSettings() noexcept
{
    static const CRegistryRecurrenceSettings s_settings;
    return s_settings;
}
