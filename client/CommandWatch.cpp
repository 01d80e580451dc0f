#include "ChangeText.h"
#include "Console.h"
#include "ListingOutput.h"
#include "LocalTime.h"
#include "PlainDocument.h"
#include "ResultAdvice.h"
#include "ServerSession.h"
#include "WideText.h"

namespace dtclient
{
namespace
{
std::string TextOfEvent(OutputForm form, const ServerEvent& event)
{
    const std::string text = Utf8FromWide(event.text);
    switch (event.id)
    {
    case EventId::CalendarUpdated:
        return CalendarChangeText(form, event.number, text, LocalFromUtc);
    case EventId::ContactUpdated:
        return ContactChangeText(form, event.number, text);
    default:
        return OtherEventText(form, EventName(event.id), event.number, text);
    }
}

// Gives the events to `print` until Ctrl+C, the end of the time, or the end of the server. `print`
// answers false when the output takes no more.
ExitCode Follow(CServerSession& session,
                const Arguments& arguments,
                const std::function<bool(const ServerEvent&)>& print)
{
    bool outputClosed = false;
    session.SetEventHandler([&print, &outputClosed](const ServerEvent& event) {
        outputClosed = !print(event) || outputClosed;
    });
    const auto done = [&outputClosed] { return outputClosed; };
    const PumpEnd end =
        arguments.runFor ? session.Pump().Run(done, *arguments.runFor) : session.Pump().Run(done);
    session.SetEventHandler(nullptr);
    switch (end)
    {
    case PumpEnd::Done:
        return ExitCode::Failed; // the reader of standard output has gone
    case PumpEnd::ServerLost: {
        const auto code = static_cast<std::uint32_t>(session.Pump().ProbeResult());
        WriteMessage(FailureText("Watching the server", code, AdviceForCall(code)));
        return ExitCode::Failed;
    }
    case PumpEnd::TimedOut:
    case PumpEnd::Interrupted:
        break;
    }
    return ExitCode::Done;
}

bool Report(const CStepResult& result)
{
    if (!result.IsDone())
    {
        WriteMessage(result.Message());
    }
    return result.IsDone();
}
} // namespace

ExitCode RunWatch(const Arguments& arguments)
{
    std::optional<ListWindow> window;
    if (arguments.from || arguments.to)
    {
        window = WindowOrMessage(arguments);
        if (!window)
        {
            return ExitCode::WrongUsage;
        }
    }
    CServerSession session;
    if (!Report(session.Open()) || !Report(session.Initialize(arguments.type, arguments.timeout)))
    {
        return ExitCode::Failed;
    }
    // What changes while the listing is under way is printed behind it.
    std::vector<ServerEvent> early;
    session.SetEventHandler([&early](const ServerEvent& event) {
        if (event.id == EventId::CalendarUpdated || event.id == EventId::ContactUpdated)
        {
            early.push_back(event);
        }
    });
    ExitCode listed = ExitCode::Done;
    if (window)
    {
        // A change is told from what the server has read before, so the listing also sharpens what
        // is reported later.
        std::wstring document;
        if (!Report(session.List(*window, arguments.timeout, document)))
        {
            return ExitCode::Failed;
        }
        listed = PrintListing(arguments, *window, document);
        if (listed == ExitCode::Failed)
        {
            return ExitCode::Failed;
        }
    }
    WriteMessage("Watching. Ctrl+C ends.\n");
    for (const ServerEvent& event : early)
    {
        if (!WriteResult(TextOfEvent(arguments.form, event)))
        {
            return ExitCode::Failed;
        }
    }
    const ExitCode followed = Follow(session, arguments, [&arguments](const ServerEvent& event) {
        // Heartbeats say only that nothing happens; "trace" shows them.
        return event.id == EventId::Trace || WriteResult(TextOfEvent(arguments.form, event));
    });
    return followed == ExitCode::Done ? listed : followed;
}

ExitCode RunTrace(const Arguments& arguments)
{
    CServerSession session;
    if (!Report(session.Open()))
    {
        return ExitCode::Failed;
    }
    WriteMessage("Waiting for heartbeats. Ctrl+C ends.\n");
    return Follow(session, arguments, [&arguments](const ServerEvent& event) {
        if (event.id != EventId::Trace)
        {
            return true;
        }
        const std::string line = Utf8FromWide(event.text);
        const std::string text = arguments.form == OutputForm::Json
                                     ? TextEventJson(EventName(event.id), "line", line)
                                     : MinuteText(LocalNow()) + "  " + line;
        return WriteResult(text + "\n");
    });
}
} // namespace dtclient
