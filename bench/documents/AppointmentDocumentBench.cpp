#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "AppointmentXml.h"
#include "TextWriterDocument.h"

/// The appointments document beside libxml2's text writer producing the same document, character by
/// character, from records that hold the same values; and beside a plain copy of the finished document,
/// below which no writer gets: its memory has to be had and filled.
///
/// Units: chars/s are characters of the document. Our writer's have two bytes each, as the client gets
/// them; the text writer's have one, as all of this text is ASCII. bytes/s counts what each of them writes.

namespace
{

struct Corpus
{
    std::vector<MeetingInfo> wide;
    std::vector<NarrowMeeting> narrow;
};

constexpr std::string_view kSentence = "We go through the figures, then the plans. ";
constexpr std::string_view kHtmlSentence =
    "<p class=\"MsoNormal\"><b>We</b> go through the figures &amp; then the plans.</p>\r\n";

std::string Body(std::string_view sentence, std::size_t length)
{
    std::string body;
    while (body.size() < length)
    {
        body += sentence;
    }
    body.resize(length);
    return body;
}

std::vector<std::uint8_t> Block(std::size_t length, std::size_t seed)
{
    std::vector<std::uint8_t> block(length);
    for (std::size_t i = 0; i < length; ++i)
    {
        block[i] = static_cast<std::uint8_t>(i * 37 + seed);
    }
    return block;
}

WString Wide(const std::string& ascii)
{
    return {ascii.begin(), ascii.end()};
}

SYSTEMTIME Time(const int (&time)[6])
{
    SYSTEMTIME result{};
    result.wMonth = static_cast<WORD>(time[0]);
    result.wDay = static_cast<WORD>(time[1]);
    result.wYear = static_cast<WORD>(time[2]);
    result.wHour = static_cast<WORD>(time[3]);
    result.wMinute = static_cast<WORD>(time[4]);
    result.wSecond = static_cast<WORD>(time[5]);
    return result;
}

MeetingInfo WideOf(const NarrowMeeting& narrow)
{
    MeetingInfo wide;
    wide.strName = Wide(narrow.subject);
    wide.location = Wide(narrow.location);
    wide.strDesc = Wide(narrow.description);
    wide.strXaltDesc = Wide(narrow.htmlBody);
    wide.hostName = Wide(narrow.hostName);
    wide.hostEmail = Wide(narrow.hostEmail);
    wide.duration = narrow.duration;
    wide.meetingStatus = narrow.meetingStatus;
    wide.isRecurring = narrow.isRecurring ? 1 : 0;
    wide.recurrenceType = narrow.recurrenceType;
    wide.recurrencePattern = Wide(narrow.recurrencePattern);
    wide.recurrenceState = narrow.recurrenceState;
    wide.timeZone = narrow.timeZone;
    wide.isAllDay = narrow.isAllDay ? 1 : 0;
    wide.responseStatus = narrow.responseStatus;
    wide.busyStatus = narrow.busyStatus;
    wide.start = Time(narrow.startTime);
    wide.end = Time(narrow.endTime);
    wide.firstTime = Time(narrow.firstTime);
    wide.uid = Wide(narrow.uid);
    wide.itemRef.profileName = Wide(narrow.profileName);
    wide.itemRef.storeName = Wide(narrow.storeName);
    wide.itemRef.entryId = narrow.entryId;
    wide.itemRef.instanceKey = narrow.instanceKey;
    wide.itemRef.storeEntryId = narrow.storeEntryId;
    for (const NarrowAttendee& attendee : narrow.attendees)
    {
        AttendeeInfo info;
        info.name = Wide(attendee.name);
        info.email = Wide(attendee.email);
        info.recipientFlags = attendee.recipientFlags;
        info.recipientType = attendee.recipientType;
        info.trackStatus = attendee.trackStatus;
        wide.attendees.push_back(info);
    }
    return wide;
}

NarrowMeeting MakeMeeting(std::size_t number, std::size_t bodyLength)
{
    NarrowMeeting meeting;
    meeting.subject = "Planning & review, round " + std::to_string(number);
    meeting.location = "Room 4, second floor";
    meeting.description = Body(kSentence, bodyLength);
    meeting.htmlBody = "<html><body>" + Body(kHtmlSentence, bodyLength) + "</body></html>";
    meeting.hostName = "Ada Lovelace";
    meeting.hostEmail = "ada@example.org";
    meeting.duration = 60;
    meeting.meetingStatus = 1;
    meeting.isRecurring = number % 10 == 0;
    meeting.profileName = "Outlook";
    meeting.storeName = "Mailbox - Ada Lovelace";
    meeting.responseStatus = 1;
    meeting.busyStatus = 2;
    const int hour = static_cast<int>(number % 24);
    const int start[6] = {3, 5, 2024, hour, 0, 0};
    std::copy(std::begin(start), std::end(start), meeting.startTime);
    std::copy(std::begin(start), std::end(start), meeting.firstTime);
    const int end[6] = {3, 5, 2024, hour, 59, 0};
    std::copy(std::begin(end), std::end(end), meeting.endTime);
    if (meeting.isRecurring)
    {
        meeting.recurrenceType = 2;
        meeting.recurrencePattern = "every Monday from 14:00 to 15:00";
        meeting.recurrenceState = Block(120, number);
        meeting.timeZone = Block(48, number);
    }
    meeting.entryId = Block(70, number);
    meeting.instanceKey = Block(8, number);
    meeting.storeEntryId = Block(180, 1);
    meeting.uid = "040000008200E00074C5B7101A82E00800000000B0E0E0E0";
    for (std::uint32_t i = 0; i < 5; ++i)
    {
        const std::string name = "attendee" + std::to_string(i);
        meeting.attendees.push_back({name, name + "@example.org", i == 0 ? 3U : 1U, 1, i});
    }
    return meeting;
}

/// The records of one figure; both writers' documents were compared before any is measured.
Corpus MakeCorpus(std::size_t count, std::size_t bodyLength)
{
    Corpus corpus;
    for (std::size_t number = 0; number < count; ++number)
    {
        corpus.narrow.push_back(MakeMeeting(number, bodyLength));
        corpus.wide.push_back(WideOf(corpus.narrow.back()));
    }
    if (Wide(TextWriterDocument(corpus.narrow)) != BuildAppointmentsXml(corpus.wide))
    {
        std::fputs("the two writers do not give the same document\n", stderr);
        std::abort();
    }
    return corpus;
}

void SetFigures(benchmark::State& state,
                const Corpus& corpus,
                std::size_t characters,
                std::size_t bytesEach)
{
    const auto rounds = static_cast<double>(state.iterations());
    state.counters["bytes/s"] =
        benchmark::Counter(rounds * static_cast<double>(characters * bytesEach),
                           benchmark::Counter::kIsRate,
                           benchmark::Counter::kIs1024);
    state.counters["chars/s"] =
        benchmark::Counter(rounds * static_cast<double>(characters), benchmark::Counter::kIsRate);
    state.counters["records/s"] = benchmark::Counter(
        rounds * static_cast<double>(corpus.wide.size()), benchmark::Counter::kIsRate);
}

void OurWriter(benchmark::State& state)
{
    const Corpus corpus = MakeCorpus(static_cast<std::size_t>(state.range(0)),
                                     static_cast<std::size_t>(state.range(1)));
    std::size_t characters = 0;
    for ([[maybe_unused]] auto round : state)
    {
        const WString document = BuildAppointmentsXml(corpus.wide);
        characters = document.size();
        benchmark::DoNotOptimize(document.data());
    }
    SetFigures(state, corpus, characters, sizeof(WCHAR));
}

void CopyOfTheDocument(benchmark::State& state)
{
    const Corpus corpus = MakeCorpus(static_cast<std::size_t>(state.range(0)),
                                     static_cast<std::size_t>(state.range(1)));
    const WString document = BuildAppointmentsXml(corpus.wide);
    for ([[maybe_unused]] auto round : state)
    {
        const WString copy(document);
        benchmark::DoNotOptimize(copy.data());
    }
    SetFigures(state, corpus, document.size(), sizeof(WCHAR));
}

void LibXmlTextWriter(benchmark::State& state)
{
    const Corpus corpus = MakeCorpus(static_cast<std::size_t>(state.range(0)),
                                     static_cast<std::size_t>(state.range(1)));
    std::size_t characters = 0;
    for ([[maybe_unused]] auto round : state)
    {
        const std::string document = TextWriterDocument(corpus.narrow);
        characters = document.size();
        benchmark::DoNotOptimize(document.data());
    }
    SetFigures(state, corpus, characters, 1);
}

void Sizes(benchmark::internal::Benchmark* figure)
{
    figure->ArgNames({"records", "body"});
    for (const int records : {1, 100, 2000})
    {
        for (const int body : {0, 500, 20000})
        {
            figure->Args({records, body});
        }
    }
}

BENCHMARK(OurWriter)->Apply(Sizes);
BENCHMARK(CopyOfTheDocument)->Apply(Sizes);
BENCHMARK(LibXmlTextWriter)->Apply(Sizes);

} // namespace

BENCHMARK_MAIN();
