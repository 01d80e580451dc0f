#include <nlohmann/json.hpp>

#include "StoreFixture.h"
#include "TestPaths.h"

using namespace mapitest;

namespace
{

#define DT_WIDEN(text) L##text
#define DT_WIDE(text) DT_WIDEN(text)

/// Values that a document describes and the library encodes.
class BlobTest : public StoreTest
{
protected:
    std::string BytesOfValue(ULONG64 message)
    {
        const MessageRef opened = OpenMessage(message);
        const CHeld<SPropValue> value = GetProp(opened.Get(), 0x66010102);
        EXPECT_EQ(value->ulPropTag, 0x66010102U);
        return HexOf(
            std::string(reinterpret_cast<char*>(value->Value.bin.lpb), value->Value.bin.cb));
    }
};

TEST_F(BlobTest, RecurrencesBecomeThePublishedBytes)
{
    WIN32_FIND_DATAW found{};
    const std::wstring folder = L"Z:" DT_WIDE(DT_SOURCE_DIR) L"/tests/data/recurrence-encoding/";
    HANDLE search = FindFirstFileW((folder + L"*.json").c_str(), &found);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    std::string messages;
    std::vector<std::pair<std::wstring, std::string>> expected;
    do
    {
        const auto vector = nlohmann::json::parse(ReadFileText(folder + found.cFileName));
        messages +=
            std::string(expected.empty() ? "" : ",\n") + R"({ "id": )" +
            std::to_string(200 + expected.size()) +
            R"(, "folder": 8, "class": "IPM.Appointment", "properties": { "0x66010102": { "recurrence": )" +
            vector["recurrence"].dump() + " } } }";
        expected.emplace_back(found.cFileName, vector["bytes"].get<std::string>());
    } while (FindNextFileW(search, &found));
    FindClose(search);
    ASSERT_GE(expected.size(), 10U);
    WriteDocument(UsualDocument(messages));
    Start();
    for (size_t i = 0; i < expected.size(); ++i)
    {
        EXPECT_EQ(BytesOfValue(200 + i), expected[i].second)
            << std::string(expected[i].first.begin(), expected[i].first.end());
    }
}

TEST_F(BlobTest, ZonesBecomeThePublishedBytes)
{
    WriteDocument(UsualDocument(
        R"({ "id": 200, "folder": 8, "class": "IPM.Appointment", "properties": { "0x66010102": { "timeZone": {
             "bias": 480, "daylightBias": -60,
             "standardDate": { "month": 11, "week": 1, "day": "SU", "time": "02:00" },
             "daylightDate": { "month": 3, "week": 2, "day": "SU", "time": "02:00" } } } } },
           { "id": 201, "folder": 8, "class": "IPM.Appointment", "properties": { "0x66010102": { "timeZone": {
             "bias": -330 } } } })"));
    Start();
    // [MS-OXOCAL] 4.1.5
    EXPECT_EQ(BytesOfValue(200),
              "E001000000000000C4FFFFFF000000000B00000001000200"
              "000000000000000000000300000002000200000000000000");
    EXPECT_EQ(BytesOfValue(201), "B6FEFFFF" + std::string(88, '0'));
}

} // namespace
