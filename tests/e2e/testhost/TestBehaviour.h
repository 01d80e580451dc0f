#pragma once

/// What the test host does in a listing. A client asks for it by the begin of the window: so many
/// seconds into the year 2020.
enum class TestBehaviour : unsigned
{
    EmptyListing = 0,
    OneAppointment = 1,
    Hang = 2, ///< Until the event kGoOnEvent is signalled.
    AccessViolation = 3,
    EscapingException = 4, ///< A C++ exception that nobody catches.
    FilterTakenAway = 5,   ///< Another filter is set, as a library would; then an access violation.
    LargeDocument = 6,     ///< Of kLargeUnits letters.
    ManyChanges = 7,       ///< kManyChanges events, then an empty listing.
    CrashInFilter = 8,     ///< An access violation, and another one inside the crash filter.
    OneChangeEach = 9,     ///< One event of each change type, calendar and contacts.
    EmptyText = 10, ///< An answer without a document, as that of a server without a mail system.
    FolderFailure = 11, ///< The record by which a folder that cannot be read is told.
};

/// Signalled by a test that lets a hanging listing go on.
constexpr const wchar_t* kGoOnEvent = L"dtOIEx64-testhost-go-on";

/// Signalled by the test host as soon as it hangs.
constexpr const wchar_t* kHangsEvent = L"dtOIEx64-testhost-hangs";

constexpr unsigned kLargeUnits = 5000000;
constexpr unsigned kManyChanges = 1000;
