// fault_sweep [STRIDE [OFFSET]]: runs the calendar scenario with each single MAPI call failing once, with
// three statuses each; with a stride only each STRIDE-th of these runs, from OFFSET on.
//
// Prints a line for each run that went wrong and one that counts them. Exit code 0: none did.

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "MapiStoreControl.h"
#include "ProcAddress.h"
#include "SweepScenario.h"

namespace
{

constexpr const char* kStatuses[] = {"MAPI_E_NETWORK_ERROR", "E_FAIL", "MAPI_E_NOT_ENOUGH_MEMORY"};

// What bring-up may answer.
constexpr unsigned long kInitResults[] = {0, 0x80080002, 0x80080003, 0x80080004};

/// The controls of the stand-in library that the system's MAPI has loaded.
struct Controls
{
    decltype(&MapiStoreConfigure) configure = nullptr;
    decltype(&MapiStoreGetCounts) getCounts = nullptr;
    decltype(&MapiStoreGetReport) getReport = nullptr;
};

/// How often the scenario calls an operation when nothing fails.
struct Operation
{
    std::string name;
    unsigned calls;
};

bool LoadControls(Controls& controls)
{
    const HMODULE library = GetModuleHandleW(L"mapistore64.dll");
    if (library == nullptr)
    {
        std::fputs("fault_sweep: mapistore64.dll is not the mail client of this prefix\n", stderr);
        return false;
    }
    controls.configure = ProcAddress<decltype(&MapiStoreConfigure)>(library, "MapiStoreConfigure");
    controls.getCounts = ProcAddress<decltype(&MapiStoreGetCounts)>(library, "MapiStoreGetCounts");
    controls.getReport = ProcAddress<decltype(&MapiStoreGetReport)>(library, "MapiStoreGetReport");
    return controls.configure != nullptr && controls.getCounts != nullptr &&
           controls.getReport != nullptr;
}

/// The plan of the next run: the library reads it when it is initialised.
bool SetFaults(const Controls& controls, const std::string& plan)
{
    return SUCCEEDED(controls.configure(L"Faults", std::wstring(plan.begin(), plan.end()).c_str()));
}

std::string ReportOf(const Controls& controls)
{
    std::string report(controls.getReport(nullptr, 0), '\0');
    if (!report.empty())
    {
        controls.getReport(report.data(), static_cast<ULONG>(report.size()));
    }
    return report;
}

/// A buffer that would not be freed is left by its owner's doing, and nobody could tell anyone.
bool IsLeft(const std::string& operation)
{
    return operation == "MAPIFreeBuffer" || operation == "MAPIUninitialize";
}

/// Counts the calls of every operation by faults that never come.
std::vector<Operation> CountCalls(const Controls& controls, const std::vector<std::string>& names)
{
    std::string plan;
    for (const std::string& name : names)
    {
        plan += name + " call 1000000000 fail E_FAIL\n";
    }
    std::vector<Operation> operations;
    if (!SetFaults(controls, plan))
    {
        std::fputs("fault_sweep: the library refused the counting plan\n", stderr);
        return operations;
    }
    RunSweepScenario();
    const std::string report = ReportOf(controls);
    constexpr const char* kLine = "fault applied 0 of ";
    for (std::size_t at = report.find(kLine); at != std::string::npos;
         at = report.find(kLine, at + 1))
    {
        const char* number = report.c_str() + at + std::char_traits<char>::length(kLine);
        char* rest = nullptr;
        const auto calls = static_cast<unsigned>(std::strtoul(number, &rest, 10));
        const std::string line(
            rest, report.find('\n', at) - static_cast<std::size_t>(rest - report.c_str()));
        const std::size_t name = line.find(": ") + 2;
        const std::string operation = line.substr(name, line.find(' ', name) - name);
        if (calls > 0 && !IsLeft(operation))
        {
            operations.push_back({operation, calls});
        }
    }
    return operations;
}

/// What is wrong with a run; empty when nothing is.
std::string Judge(const Controls& controls, const SweepResult& result)
{
    std::string wrong;
    bool isKnown = false;
    for (const unsigned long known : kInitResults)
    {
        isKnown = isKnown || result.init == known;
    }
    if (!isKnown)
    {
        wrong += " init " + std::to_string(result.init);
    }
    if ((result.init == 0) != (result.listing == 0))
    {
        wrong += " listing " + std::to_string(result.listing);
    }
    if (!result.isListingWhole || !result.areChangesWhole || !result.isProfileWhole)
    {
        wrong += " torn document";
    }
    MapiStoreCounts counts{};
    controls.getCounts(&counts);
    if (counts.interfacesLeft + counts.buffersLeft + counts.connectionsLeft + counts.misuse != 0)
    {
        wrong += " ledger: interfaces " + std::to_string(counts.interfacesLeft) + " buffers " +
                 std::to_string(counts.buffersLeft) + " connections " +
                 std::to_string(counts.connectionsLeft) + " misuse " +
                 std::to_string(counts.misuse);
    }
    return wrong;
}

std::vector<std::string> ReadNames(const wchar_t* path)
{
    std::vector<std::string> names;
    std::FILE* const file = _wfopen(path, L"r");
    if (file == nullptr)
    {
        return names;
    }
    char line[256];
    while (std::fgets(line, sizeof line, file) != nullptr)
    {
        std::string name(line);
        while (!name.empty() && (name.back() == '\n' || name.back() == '\r' || name.back() == ' '))
        {
            name.pop_back();
        }
        if (!name.empty() && name.front() != '#')
        {
            names.push_back(name);
        }
    }
    std::fclose(file);
    return names;
}

int Sweep(const Controls& controls,
          const std::vector<Operation>& operations,
          unsigned stride,
          unsigned offset)
{
    unsigned number = 0;
    unsigned runs = 0;
    unsigned wrongRuns = 0;
    for (const Operation& operation : operations)
    {
        for (unsigned call = 1; call <= operation.calls; call++)
        {
            for (const char* status : kStatuses)
            {
                if (number++ % stride != offset)
                {
                    continue;
                }
                const std::string plan =
                    operation.name + " call " + std::to_string(call) + " fail " + status;
                SetFaults(controls, plan);
                const std::string wrong = Judge(controls, RunSweepScenario());
                runs++;
                if (!wrong.empty())
                {
                    wrongRuns++;
                    std::printf(
                        "%s:%s\n%s\n", plan.c_str(), wrong.c_str(), ReportOf(controls).c_str());
                    std::fflush(stdout);
                }
            }
        }
    }
    std::printf("%u of %u runs, %u wrong\n", runs, number, wrongRuns);
    return runs > 0 && wrongRuns == 0 ? 0 : 1;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc < 2 || argc > 4)
    {
        std::fputs("usage: fault_sweep OPERATIONS_FILE [STRIDE [OFFSET]]\n", stderr);
        return 2;
    }
    const unsigned stride = argc > 2 ? static_cast<unsigned>(wcstoul(argv[2], nullptr, 10)) : 1;
    const unsigned offset = argc > 3 ? static_cast<unsigned>(wcstoul(argv[3], nullptr, 10)) : 0;
    Controls controls;
    if (stride == 0 || !LoadControls(controls))
    {
        return 2;
    }
    SetFaults(controls, "");
    const SweepResult clean = RunSweepScenario();
    if (clean.init != 0 || clean.appointments == 0 || !Judge(controls, clean).empty())
    {
        std::printf("the scenario fails without a fault: init %lx, %u appointments,%s\n",
                    clean.init,
                    static_cast<unsigned>(clean.appointments),
                    Judge(controls, clean).c_str());
        return 1;
    }
    const std::vector<Operation> operations = CountCalls(controls, ReadNames(argv[1]));
    std::printf("%u operations called, %u appointments listed\n",
                static_cast<unsigned>(operations.size()),
                static_cast<unsigned>(clean.appointments));
    return Sweep(controls, operations, stride, offset);
}
