// Tasks through the work thread's queue, beside a bare semaphore handed over between two threads.

#include <windows.h>

#include <atomic>

#include "Figures.h"
#include "MailScript.h"
#include "WorkThread.h"

namespace
{

constexpr int kRuns = 5;
constexpr int kOneByOne = 5000;
constexpr int kBursts = 200;
/// The thread drains a burst in one go and eats the other counts of the semaphore afterwards, in empty
/// passes. Two bursts stay below the limit of 255, at which AddWork begins to sleep.
constexpr int kBurst = 100;

HANDLE g_done = nullptr;

/// The other side of the floor: takes one count and answers it, until told to end.
struct Partner
{
    HANDLE semaphore;
    std::atomic<int> left;
    std::atomic<bool> pumps{
        false}; ///< waits for input as well and looks for a message, as the loop must
};

void WaitAsPartner(const Partner& partner)
{
    if (!partner.pumps)
    {
        WaitForSingleObject(partner.semaphore, INFINITE);
        return;
    }
    MsgWaitForMultipleObjects(1, &partner.semaphore, FALSE, INFINITE, 0x4FF);
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
}

DWORD WINAPI PartnerThread(void* parameter)
{
    auto* const partner = static_cast<Partner*>(parameter);
    for (;;)
    {
        WaitAsPartner(*partner);
        const int left = --partner->left;
        if (left < 0)
        {
            return 0;
        }
        if (left == 0)
        {
            SetEvent(g_done);
        }
    }
}

double BareOneByOne(Partner& partner)
{
    return BestRate(kRuns, kOneByOne, [&partner](int operations) {
        for (int i = 0; i < operations; i++)
        {
            partner.left = 1;
            ReleaseSemaphore(partner.semaphore, 1, nullptr);
            WaitForSingleObject(g_done, INFINITE);
        }
    });
}

double BareBursts(Partner& partner)
{
    return BestRate(kRuns, kBursts * kBurst, [&partner](int operations) {
        for (int i = 0; i < operations; i += kBurst)
        {
            partner.left = kBurst;
            for (int j = 0; j < kBurst; j++)
            {
                ReleaseSemaphore(partner.semaphore, 1, nullptr);
            }
            WaitForSingleObject(g_done, INFINITE);
        }
    });
}

double QueueBursts(CMailScript& script, int burst, int total)
{
    std::atomic<int> left{0};
    script.deleteMsgInfo = [&left](WString&) -> ULONG {
        if (--left == 0)
        {
            SetEvent(g_done);
        }
        return 0;
    };
    WorkTask task;
    task.eTaskType = TaskType::DeleteAppt;
    return BestRate(kRuns, total, [&left, &task, burst](int operations) {
        const CWorkThreadUse work;
        for (int i = 0; i < operations; i += burst)
        {
            left = burst;
            for (int j = 0; j < burst; j++)
            {
                work->AddWork(task);
            }
            WaitForSingleObject(g_done, INFINITE);
        }
    });
}

double Trims()
{
    return BestRate(kRuns, kOneByOne, [](int operations) {
        for (int i = 0; i < operations; i++)
        {
            SetProcessWorkingSetSize(
                GetCurrentProcess(), static_cast<SIZE_T>(-1), static_cast<SIZE_T>(-1));
        }
    });
}

} // namespace

int wmain()
{
    g_done = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    Partner partner{CreateSemaphoreW(nullptr, 0, 255, nullptr), {0}, {false}};
    const HANDLE thread = CreateThread(nullptr, 0, PartnerThread, &partner, 0, nullptr);
    CMailScript script;
    script.keepsNotes = false;
    EnsureWorkThread();

    const double bareOneByOne = BareOneByOne(partner);
    const double bareBursts = BareBursts(partner);
    partner.pumps = true;
    partner.left = 1;
    ReleaseSemaphore(partner.semaphore, 1, nullptr); // the pass that still waits without pumping
    WaitForSingleObject(g_done, INFINITE);
    const double pumpedOneByOne = BareOneByOne(partner);
    const double oneByOne = QueueBursts(script, 1, kOneByOne);
    PrintFigure(
        "tasks one by one, each awaited", oneByOne, "bare semaphore and answer", bareOneByOne);
    PrintFigure("tasks one by one, each awaited", oneByOne, "the same with a pump", pumpedOneByOne);
    PrintFigure("tasks in bursts of 100",
                QueueBursts(script, kBurst, kBursts * kBurst),
                "bare semaphore in bursts",
                bareBursts);
    std::printf("%-52s %12.0f /s\n", "working set trims, one of which follows each task", Trims());

    ReleaseWorkThread(false);
    partner.left = 0;
    ReleaseSemaphore(partner.semaphore, 1, nullptr);
    WaitForSingleObject(thread, INFINITE);
    return 0;
}
