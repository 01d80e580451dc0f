#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "DateTexts.h"
#include "NarrowText.h"
#include "RuleRun.h"
#include "TestPaths.h"
#include "ZoneSamples.h"

// Stored patterns in tests/data/recurrence with their instances beside them: the worked examples of
// [MS-OXOCAL], and whatever else is added to the folder.

namespace
{

std::string ReadText(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// The value of a "# name: value" line.
std::string Setting(const std::string& text, const std::string& name)
{
    const std::size_t at = text.find("# " + name + ": ");
    if (at == std::string::npos)
    {
        return {};
    }
    const std::size_t begin = at + name.size() + 4;
    return text.substr(begin, text.find('\n', begin) - begin);
}

std::vector<std::string> Names()
{
    std::vector<std::string> names;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(DT_SOURCE_DIR) + "/tests/data/recurrence"))
    {
        if (entry.path().extension() == ".hex")
        {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string LinesOf(const RuleRun& run)
{
    std::string lines;
    for (const RecurInstance& instance : run.instances)
    {
        lines += TextOf(instance.start) + " " + TextOf(instance.end) + " " +
                 std::to_string(instance.subKey) + " " + std::to_string(instance.hasMeetingType) +
                 " " + std::to_string(instance.meetingType) + " " + NarrowText(instance.subject) +
                 " | " + NarrowText(instance.location) + "\n";
    }
    return lines;
}

class StoredPatternTest : public testing::TestWithParam<std::string>
{
};

std::string NameOf(const testing::TestParamInfo<std::string>& info)
{
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

TEST_P(StoredPatternTest, ExpandsToTheInstancesBesideIt)
{
    const std::filesystem::path path =
        std::filesystem::path(DT_SOURCE_DIR) / "tests/data/recurrence" / (GetParam() + ".hex");
    const std::string text = ReadText(path);
    const std::string bytes = BytesOf(text);
    RuleRun run;
    run.blob.assign(bytes.begin(), bytes.end());
    run.from = Setting(text, "from");
    run.to = Setting(text, "to");
    run.subject = WidenText(Setting(text, "subject"));
    run.location = WidenText(Setting(text, "location"));
    if (Setting(text, "zone") == "us-eastern")
    {
        run.zone = pattern::Zone(zones::UsEastern());
    }
    std::filesystem::path expected = path;
    expected.replace_extension(".expected.txt");

    EXPECT_EQ(LinesOf(run.Expand()), ReadText(expected));
}

INSTANTIATE_TEST_SUITE_P(Folder, StoredPatternTest, testing::ValuesIn(Names()), NameOf);

TEST(StoredPatterns, AreThere)
{
    EXPECT_GE(Names().size(), 5U);
}

TEST(PatternEncoder, WritesThePublishedPatternsByteForByte)
{
    pattern::Pattern weekly = pattern::Weekly("2007-03-26", 2 + 16 + 32, 1);
    weekly.firstDateTime = 8640;
    weekly.endType = pattern::kEndByCount;
    weekly.occurrenceCount = 12;
    weekly.endDate = pattern::Minutes("2007-04-20");
    weekly.startOffset = 600;
    weekly.endOffset = 630;
    const std::string folder = std::string(DT_SOURCE_DIR) + "/tests/data/recurrence/";
    const std::string plain = BytesOf(ReadText(folder + "published-weekly.hex"));
    EXPECT_EQ(weekly.Write(), pattern::Bytes(plain.begin(), plain.end()));

    pattern::Modified modified =
        pattern::Moved("2007-04-16T10:00:00", "2007-04-16T11:00:00", "2007-04-16T11:30:00");
    modified.subject = "Simple Recurrence with exceptions";
    modified.location = "34/4141";
    weekly.modified.push_back(modified);
    const std::string changed = BytesOf(ReadText(folder + "published-weekly-with-exception.hex"));
    EXPECT_EQ(weekly.Write(), pattern::Bytes(changed.begin(), changed.end()));
}

} // namespace
