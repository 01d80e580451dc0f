#pragma once

#include <string>

#include "StoreFixture.h"

/// Reads what a listing reads, through the same calls in the same order, and does nothing with it: no
/// records, no traces, no document; and the server's pauses behind each recipient only when it is told to.
///
/// Errors: ends the process, with a line on standard error, when a call fails that has to succeed.
class CFloorReader
{
public:
    /// Logs on and opens the calendar's table: not part of a listing.
    CFloorReader(const std::wstring& storeFolder, bool pauses);
    CFloorReader(const CFloorReader&) = delete;
    CFloorReader& operator=(const CFloorReader&) = delete;
    ~CFloorReader();

    /// Reads the first week of the sample store once. Gives the number of messages.
    unsigned Read();

private:
    void ResolveTags(IMAPIProp* object);
    void RestrictToWeek();
    bool ReadMessage(IMessage* message);
    void ReadSeries(IMessage* message);
    void ReadInstance(const SBinary& entryId);

    bool m_pauses;
    mapitest::SessionRef m_session;
    mapitest::StoreRef m_store;
    mapitest::FolderRef m_folder;
    mapitest::TableRef m_table;
    ULONG m_clipStart = 0;
    ULONG m_clipEnd = 0;
    ULONG m_recurring = 0;
    ULONG m_start = 0;
    ULONG m_end = 0;
    ULONG m_pattern = 0;
    ULONG m_recur = 0;
    ULONG m_recurrenceType = 0;
};
