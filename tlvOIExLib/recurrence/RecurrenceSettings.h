#pragma once

#include "PlatformTypes.h"

/// What the recurrence engine asks of the configuration. In the server the registry answers, in
/// tools and native tests a plain value.
///
/// Thread: the one that expands. Each value is asked for anew at every weekly expansion.
/// Errors: a value that is absent or cannot be read is an empty text.
class IRecurrenceSettings
{
public:
    IRecurrenceSettings() = default;
    IRecurrenceSettings(const IRecurrenceSettings&) = delete;
    IRecurrenceSettings& operator=(const IRecurrenceSettings&) = delete;
    virtual ~IRecurrenceSettings() = default;

    /// The site that this client belongs to, as it stands in the user's settings.
    [[nodiscard]] virtual WString SiteName() const = 0;

    /// The one site whose weekly series list deleted and moved instances all the same. Compared
    /// without regard to case; empty matches no site.
    [[nodiscard]] virtual WString KeepAllSiteName() const = 0;
};
