#pragma once

#include <string>

/// What one run of the scenario gave.
struct SweepResult
{
    unsigned long init = 0;       ///< result of the bring-up
    unsigned long listing = 0;    ///< result of the listing
    std::size_t appointments = 0; ///< in the listing's document
    bool isListingWhole = false;  ///< the document is empty or has both its outer tags
    bool isProfileWhole = false;  ///< likewise for the profile document
    bool areChangesWhole = true;  ///< likewise for the documents of the changes
};

/// Bring-up for calendar and contacts, one listing, a change and a deletion of the first listed
/// appointment, and the release: every road of the calendar, on the calling thread.
SweepResult RunSweepScenario();
