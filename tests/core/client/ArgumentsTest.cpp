#include "Arguments.h"

#include <gtest/gtest.h>

using dtclient::Arguments;
using dtclient::CalendarTime;
using dtclient::ParseCommandLine;
using dtclient::ParsedCommandLine;

namespace
{
constexpr auto kRun = ParsedCommandLine::Kind::Run;
constexpr auto kHelp = ParsedCommandLine::Kind::Help;
constexpr auto kWrong = ParsedCommandLine::Kind::Wrong;

// The first line of what a wrong command line gets.
std::string Complaint(const std::vector<std::string>& words)
{
    const ParsedCommandLine line = ParseCommandLine(words);
    EXPECT_EQ(line.kind, kWrong);
    return line.text.substr(0, line.text.find('\n'));
}
} // namespace

TEST(Arguments, ACommandAloneHasItsDefaults)
{
    const ParsedCommandLine line = ParseCommandLine({"list"});

    ASSERT_EQ(line.kind, kRun);
    EXPECT_EQ(line.arguments.command, dtclient::Command::List);
    EXPECT_EQ(line.arguments.form, dtclient::OutputForm::Table);
    EXPECT_EQ(line.arguments.type, dtclient::WorkType::Calendaring);
    EXPECT_EQ(line.arguments.timeout, std::chrono::seconds(60));
    EXPECT_FALSE(line.arguments.from.has_value());
    EXPECT_FALSE(line.arguments.runFor.has_value());
}

TEST(Arguments, EveryCommandIsKnownByItsName)
{
    EXPECT_EQ(ParseCommandLine({"info"}).arguments.command, dtclient::Command::Info);
    EXPECT_EQ(ParseCommandLine({"watch"}).arguments.command, dtclient::Command::Watch);
    EXPECT_EQ(ParseCommandLine({"ping"}).arguments.command, dtclient::Command::Ping);
    EXPECT_EQ(ParseCommandLine({"trace"}).arguments.command, dtclient::Command::Trace);
}

TEST(Arguments, AWindowIsReadInLocalTime)
{
    const ParsedCommandLine line =
        ParseCommandLine({"list", "--from", "2026-11-01", "--to=2026-12-01T14:30", "--json"});

    ASSERT_EQ(line.kind, kRun) << line.text;
    EXPECT_EQ(line.arguments.from, (CalendarTime{2026, 11, 1, 0, 0, 0}));
    EXPECT_EQ(line.arguments.to, (CalendarTime{2026, 12, 1, 14, 30, 0}));
    EXPECT_EQ(line.arguments.form, dtclient::OutputForm::Json);
}

TEST(Arguments, NumbersAndTypesAreRead)
{
    const ParsedCommandLine watch = ParseCommandLine(
        {"watch", "--for", "10", "--type", "contactresolution", "--timeout", "5", "--xml"});
    const ParsedCommandLine ping = ParseCommandLine({"ping", "--count", "25"});

    ASSERT_EQ(watch.kind, kRun) << watch.text;
    EXPECT_EQ(watch.arguments.runFor, std::chrono::seconds(10));
    EXPECT_EQ(watch.arguments.timeout, std::chrono::seconds(5));
    EXPECT_EQ(watch.arguments.type, dtclient::WorkType::ContactResolution);
    EXPECT_EQ(watch.arguments.form, dtclient::OutputForm::Xml);
    EXPECT_EQ(ping.arguments.count, 25U);
}

TEST(Arguments, HelpIsGivenForTheProgramAndForEachCommand)
{
    EXPECT_EQ(ParseCommandLine({"--help"}).kind, kHelp);
    for (const char* const command : {"info", "list", "watch", "ping", "trace"})
    {
        const ParsedCommandLine line = ParseCommandLine({command, "--json", "--help"});
        EXPECT_EQ(line.kind, kHelp);
        EXPECT_EQ(line.text.rfind(std::string("usage: dtclient ") + command, 0), 0U);
    }
}

TEST(Arguments, TheHelpSaysWhereAnOptionHasNoEffect)
{
    const std::string noEffect = "--timeout SECONDS  taken, and without effect here\n";
    for (const char* const command : {"ping", "trace"})
    {
        EXPECT_NE(ParseCommandLine({command, "--help"}).text.find(noEffect), std::string::npos);
        EXPECT_EQ(ParseCommandLine({command, "--timeout", "5", "--type=calendaring"}).kind, kRun);
    }
    for (const char* const command : {"info", "list", "watch"})
    {
        EXPECT_EQ(ParseCommandLine({command, "--help"}).text.find(noEffect), std::string::npos);
    }
}

TEST(Arguments, WhatIsWrongIsNamedAndFollowedByTheUsage)
{
    EXPECT_EQ(Complaint({}), "no command given");
    EXPECT_EQ(Complaint({"lst"}), "\"lst\" is no command");
    EXPECT_EQ(Complaint({"list", "--frm", "x"}), "\"--frm\" is no option of \"list\"");
    EXPECT_EQ(Complaint({"list", "tomorrow"}), "\"tomorrow\" is no option of \"list\"");
    EXPECT_EQ(Complaint({"list", "--from"}), "--from needs a value");
    EXPECT_EQ(Complaint({"list", "--json=1"}), "--json takes no value");
    EXPECT_EQ(Complaint({"list", "--json", "--xml"}),
              "--json and --xml exclude each other and stand once");
    EXPECT_EQ(Complaint({"list", "--to", "2026-11-31"}),
              "--to takes a date such as 2026-11-02 or 2026-11-02T14:30, not \"2026-11-31\"");
    EXPECT_EQ(Complaint({"list", "--from", "2026-11-02", "--to", "2026-11-01"}),
              "--to lies before --from");
    EXPECT_EQ(Complaint({"list", "--type", "mail"}),
              "--type is calendaring or contactresolution, not \"mail\"");
    EXPECT_EQ(Complaint({"list", "--timeout", "0"}),
              "--timeout takes a number from 1 to 604800, not \"0\"");
    EXPECT_EQ(Complaint({"ping", "--count", "12x"}),
              "--count takes a number from 1 to 1000000, not \"12x\"");
    EXPECT_EQ(Complaint({"watch", "--for", "99999999999"}),
              "--for takes a number from 1 to 604800, not \"99999999999\"");
    EXPECT_NE(ParseCommandLine({"list", "--frm"}).text.find("usage: dtclient list"),
              std::string::npos);
}

TEST(Arguments, AnOptionOfAnotherCommandIsRefused)
{
    EXPECT_EQ(Complaint({"info", "--from", "2026-11-01"}), "\"--from\" is no option of \"info\"");
    EXPECT_EQ(Complaint({"list", "--for", "5"}), "\"--for\" is no option of \"list\"");
    EXPECT_EQ(Complaint({"ping", "--xml"}), "\"--xml\" is no option of \"ping\"");
}

TEST(Arguments, AWindowWithoutEndsIsAWeekFromTodaysMidnight)
{
    const auto window = dtclient::WindowOf(Arguments{}, {2026, 12, 28, 15, 45, 10});

    ASSERT_TRUE(window.has_value());
    EXPECT_EQ(window->from, (CalendarTime{2026, 12, 28, 0, 0, 0}));
    EXPECT_EQ(window->to, (CalendarTime{2027, 1, 4, 0, 0, 0}));
}

TEST(Arguments, AWindowWithoutBeginMustNotEndBeforeToday)
{
    Arguments arguments;
    arguments.to = CalendarTime{2026, 1, 1, 0, 0, 0};

    EXPECT_FALSE(dtclient::WindowOf(arguments, {2026, 1, 2, 0, 0, 0}).has_value());
    EXPECT_TRUE(dtclient::WindowOf(arguments, {2026, 1, 1, 9, 0, 0}).has_value());
}
