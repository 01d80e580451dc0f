#pragma once

#include "RecurrenceSettings.h"

/// The recurrence engine's settings as the logged-on user's registry has them, read anew each time.
///
/// Thread: the work thread.
const IRecurrenceSettings& RegistryRecurrenceSettings() noexcept;
