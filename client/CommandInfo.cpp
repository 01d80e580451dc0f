#include "Console.h"
#include "ListingOutput.h"
#include "PlainDocument.h"
#include "ResultAdvice.h"
#include "ServerSession.h"
#include "WideText.h"

namespace dtclient
{
namespace
{
std::string ProfileText(OutputForm form, const std::string& document, const PlainDocument& profile)
{
    switch (form)
    {
    case OutputForm::Xml:
        return document + "\n";
    case OutputForm::Json:
        return PlainDocumentJson(profile) + "\n";
    case OutputForm::Table:
        break;
    }
    return PlainDocumentTable(profile);
}
} // namespace

ExitCode RunInfo(const Arguments& arguments)
{
    std::wstring document;
    {
        CServerSession session;
        for (const auto& step : {
                 std::function([&] { return session.Open(); }),
                 std::function(
                     [&] { return session.Initialize(arguments.type, arguments.timeout); }),
                 std::function([&] { return session.Profile(document); }),
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
    if (document.empty())
    {
        WriteMessage(TroubleText(
            "Asking for the profile",
            {"the server has none, though it is initialised", "start the command again"}));
        return ExitCode::Failed;
    }
    const std::string text = Utf8FromWide(document);
    PlainDocument profile;
    DocumentError error;
    const bool readable = ParsePlainDocument(text, profile, error);
    // The raw document is what helps when it cannot be read, so it is printed all the same.
    if ((readable || arguments.form == OutputForm::Xml) &&
        !WriteResult(ProfileText(arguments.form, text, profile)))
    {
        return ExitCode::Failed;
    }
    if (!readable)
    {
        ReportDocumentError("the profile", error);
        return ExitCode::Failed;
    }
    return ExitCode::Done;
}
} // namespace dtclient
