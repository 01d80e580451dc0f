#include "Console.h"
#include "ListingOutput.h"
#include "ServerSession.h"

namespace dtclient
{
ExitCode RunList(const Arguments& arguments)
{
    const std::optional<ListWindow> window = WindowOrMessage(arguments);
    if (!window)
    {
        return ExitCode::WrongUsage;
    }
    std::wstring document;
    {
        CServerSession session;
        for (const auto& step : {
                 std::function([&] { return session.Open(); }),
                 std::function(
                     [&] { return session.Initialize(arguments.type, arguments.timeout); }),
                 std::function([&] { return session.List(*window, arguments.timeout, document); }),
             })
        {
            const CStepResult result = step();
            if (!result.IsDone())
            {
                WriteMessage(result.Message());
                return ExitCode::Failed;
            }
        }
    }
    return PrintListing(arguments, *window, document);
}
} // namespace dtclient
