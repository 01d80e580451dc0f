// A burst of 10,000 changes: another process writes the document in which every appointment of the
// calendar has another subject and place, and a client hears of each. Twice, since the first burst also
// reads the appointments that no listing has read.
#include <windows.h>

#include <cstdio>

#include "BenchSession.h"

namespace
{

constexpr std::uint32_t kChanges = 10000;
constexpr unsigned kStep = 1000;
constexpr unsigned kBursts = 2;
/// So long without an event, and no more will come.
constexpr std::chrono::seconds kSilence(10);

/// What the client hears of one burst; a line for each thousand events.
class CBurst
{
public:
    explicit CBurst(CBenchSession& session)
        : m_session(session), m_startMs(NowMs()), m_last(session.Server()), m_lastMs(m_startMs)
    {
    }

    void Hear()
    {
        ++m_events;
        if (m_events % kStep == 0)
        {
            PrintStep();
        }
    }

    /// Waits until every change was heard, or nothing came for long.
    void Wait()
    {
        unsigned known = 0;
        do
        {
            known = m_events;
            m_session.Session().Pump().Run([this] { return m_events >= kChanges; }, kSilence);
        } while (m_events < kChanges && m_events != known);
        std::printf("  %u events for %u changes\n", m_events, kChanges);
    }

private:
    void PrintStep()
    {
        const ProcessFigures now = m_session.Server();
        const double nowMs = NowMs();
        std::printf("  %6u %12.0f %14.3f %14.3f %12.0f %12.0f\n",
                    m_events,
                    nowMs - m_startMs,
                    (nowMs - m_lastMs) / kStep,
                    (now.cpuMs - m_last.cpuMs) / kStep,
                    now.workingSetKiB,
                    now.privateKiB);
        std::fflush(stdout);
        m_last = now;
        m_lastMs = nowMs;
    }

    CBenchSession& m_session;
    double m_startMs;
    ProcessFigures m_last;
    double m_lastMs;
    unsigned m_events = 0;
};

bool Measure(const CBenchMachine& machine)
{
    SampleShape shape;
    shape.messages = kChanges;
    shape.attendees = 1;
    machine.PutStore(shape);
    CBenchSession session;
    if (!session.Start())
    {
        return false;
    }
    session.List();
    const ProcessFigures before = session.Server();
    for (unsigned number = 1; number <= kBursts; ++number)
    {
        shape.revised = kChanges;
        shape.revision = number;
        std::printf("Burst %u of %u changes in one moment:\n", number, kChanges);
        std::printf("  %6s %12s %14s %14s %12s %12s\n",
                    "events",
                    "ms from start",
                    "ms a change",
                    "cpu ms each",
                    "working KiB",
                    "private KiB");
        CBurst burst(session);
        session.Session().SetEventHandler([&burst](const dtclient::ServerEvent& event) {
            if (event.id == dtclient::EventId::CalendarUpdated)
            {
                burst.Hear();
            }
        });
        machine.PutStore(shape);
        burst.Wait();
        session.Session().SetEventHandler(nullptr);
    }
    const ProcessFigures after = session.Server();
    std::printf(
        "Working set %.0f KiB before, %.0f KiB behind; private %.0f KiB before, %.0f KiB behind.\n",
        before.workingSetKiB,
        after.workingSetKiB,
        before.privateKiB,
        after.privateKiB);
    return true;
}

} // namespace

int wmain()
{
    dtclient::CClientFrame frame;
    if (FAILED(frame.Create()))
    {
        return 1;
    }
    const CBenchMachine machine;
    return Measure(machine) ? 0 : 1;
}
