#include <windows.h>

#include "Commands.h"
#include "Console.h"
#include "ResultAdvice.h"
#include "RoundTripFigures.h"
#include "ServerSession.h"

namespace dtclient
{
namespace
{
using Clock = std::chrono::steady_clock;

double Microseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::micro>(duration).count();
}

// The server makes this event at its start and holds it as long as it runs.
bool IsServerRunning()
{
    const CHandle running(OpenEventW(SYNCHRONIZE, FALSE, L"EVENT_DTOUTLOOK64_INTEGRATION_EXE"));
    return running.Get() != nullptr;
}
} // namespace

ExitCode RunPing(const Arguments& arguments)
{
    PingFigures figures;
    figures.serverWasRunning = IsServerRunning();

    CServerSession session;
    const Clock::time_point start = Clock::now();
    const CStepResult opened = session.Open();
    if (!opened.IsDone())
    {
        WriteMessage(opened.Message());
        return ExitCode::Failed;
    }
    figures.activationMs = Microseconds(Clock::now() - start) / 1000;

    std::vector<double> roundTrips;
    roundTrips.reserve(arguments.count);
    for (unsigned call = 0; call < arguments.count; ++call)
    {
        const Clock::time_point before = Clock::now();
        if (const HRESULT hr = session.EmptyCall(); FAILED(hr))
        {
            const auto code = static_cast<std::uint32_t>(hr);
            WriteMessage(FailureText("Calling an empty method", code, AdviceForCall(code)));
            return ExitCode::Failed;
        }
        roundTrips.push_back(Microseconds(Clock::now() - before));
    }
    figures.calls = arguments.count;
    figures.roundTrip = SpreadOf(std::move(roundTrips));
    return WriteResult(arguments.form == OutputForm::Json ? PingJson(figures) : PingText(figures))
               ? ExitCode::Done
               : ExitCode::Failed;
}
} // namespace dtclient
