// The mail library over stores of 1,000, 10,000 and 100,000 messages: what each operation takes and how
// it grows. Each store has a process of its own, so that memory is that of one store alone.
//
// mapistore_bench          all three, side by side
// mapistore_bench COUNT    one store of so many messages, a line for each figure
#include <windows.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "ChildProcess.h"
#include "StoreFigures.h"
#include "StoreFixture.h"

namespace
{

constexpr std::array<std::uint32_t, 3> kSizes = {1000, 10000, 100000};

int MeasureOne(std::uint32_t messages)
{
    const std::wstring folder = mapitest::TempFolder();
    const std::vector<StoreFigure> figures = MeasureStore(folder, messages);
    mapitest::RemoveFolder(folder);
    for (const StoreFigure& figure : figures)
    {
        std::printf("%s\t%.3f\t%s\n", figure.what.c_str(), figure.value, figure.unit.c_str());
    }
    return figures.empty() ? 1 : 0;
}

std::vector<StoreFigure> FiguresOf(const std::string& output)
{
    std::vector<StoreFigure> figures;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);)
    {
        StoreFigure figure;
        std::istringstream fields(line);
        std::string value;
        if (std::getline(fields, figure.what, '\t') && std::getline(fields, value, '\t') &&
            std::getline(fields, figure.unit))
        {
            figure.value = std::strtod(value.c_str(), nullptr);
            while (!figure.unit.empty() && figure.unit.back() == '\r')
            {
                figure.unit.pop_back();
            }
            figures.push_back(figure);
        }
    }
    return figures;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc > 1)
    {
        return MeasureOne(static_cast<std::uint32_t>(std::wcstoul(argv[1], nullptr, 10)));
    }
    std::array<std::vector<StoreFigure>, kSizes.size()> all;
    for (std::size_t i = 0; i < kSizes.size(); ++i)
    {
        const ProgramResult result =
            RunProgram(BuildPath(L"bench\\mapistore_bench.exe"), std::to_wstring(kSizes[i]));
        all[i] = FiguresOf(result.output);
        if (result.exitCode != 0 || all[i].empty() || all[i].size() != all[0].size())
        {
            std::fprintf(stderr,
                         "The store of %u messages cannot be measured.\n%s",
                         kSizes[i],
                         result.errors.c_str());
            return 1;
        }
    }
    std::printf(
        "%-38s %12s %12s %12s   100,000 to 1,000\n", "messages", "1,000", "10,000", "100,000");
    for (std::size_t row = 0; row < all[0].size(); ++row)
    {
        const double small = all[0][row].value;
        const double large = all[2][row].value;
        std::printf("%-38s %12.1f %12.1f %12.1f %-5s",
                    all[0][row].what.c_str(),
                    small,
                    all[1][row].value,
                    large,
                    all[0][row].unit.c_str());
        std::printf(small > 0 ? " %8.1f times\n" : "\n", small > 0 ? large / small : 0.0);
    }
    return 0;
}
