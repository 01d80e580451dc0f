#pragma once

#include <cstring>

#include "StoreFixture.h"

namespace mapitest
{

inline const char* const kSeries = R"({
          "id": 100,
          "folder": 8,
          "class": "IPM.Appointment",
          "comment": "kept",
          "properties": {
            "PR_SUBJECT_W": "Planning",
            "PidLidTimeZoneStruct": { "timeZone": { "bias": -60 } },
            "PidLidLocation": "Room 4"
          }
        },
        { "id": 101, "folder": 8, "class": "IPM.Appointment", "properties": { "PR_SUBJECT_W": "Other" } })";

/// A calendar with one whole message, and ways to write and to start again.
class SaveTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(kSeries));
        Start();
    }
    /// Ends MAPI and starts again, so that everything is read from the disk.
    void Restart()
    {
        Stop();
        Start();
    }
    MessageRef NewMessage(ULONG64 folder)
    {
        const FolderRef opened = OpenFolder(folder);
        MessageRef message;
        EXPECT_EQ(opened->CreateMessage(nullptr, 0, message.Put()), S_OK);
        return message;
    }
    static ULONG64 IdOf(const MessageRef& message)
    {
        const CHeld<SPropValue> id = GetProp(message.Get(), PR_ENTRYID);
        ULONG64 number = 0;
        std::memcpy(&number, id->Value.bin.lpb + 24, sizeof(number));
        return number;
    }
};

} // namespace mapitest
