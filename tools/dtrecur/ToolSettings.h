#pragma once

#include "RecurrenceSettings.h"

/// Settings of the command line: either the site is the one that keeps all weekly instances, or
/// there is none.
class CToolSettings final : public IRecurrenceSettings
{
public:
    void KeepAll(bool keepAll) noexcept { m_keepsAll = keepAll; }

    [[nodiscard]] WString SiteName() const override { return Name(); }
    [[nodiscard]] WString KeepAllSiteName() const override { return Name(); }

private:
    [[nodiscard]] WString Name() const { return m_keepsAll ? WTEXT("site") : WTEXT(""); }

    bool m_keepsAll = false;
};
