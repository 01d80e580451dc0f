#include "ListingOutput.h"

#include <algorithm>

#include "AppointmentJson.h"
#include "AppointmentTable.h"
#include "Console.h"
#include "LocalTime.h"
#include "ResultAdvice.h"
#include "WideText.h"

namespace dtclient
{
namespace
{
// The server stops reading a folder once it has given more than this.
constexpr std::ptrdiff_t kFolderLimit = 2000;

std::string WindowText(const ListWindow& window)
{
    return MinuteText(window.from) + " and " + MinuteText(window.to);
}

bool Print(const Arguments& arguments,
           const ListWindow& window,
           const std::string& document,
           const std::vector<Appointment>& appointments)
{
    switch (arguments.form)
    {
    case OutputForm::Xml:
        return WriteResult(document + "\n");
    case OutputForm::Json:
        return WriteResult(AppointmentsJson(appointments) + "\n");
    case OutputForm::Table:
        break;
    }
    const std::string table = AppointmentsTable(appointments, LocalFromUtc);
    if (table.empty())
    {
        return WriteResult("No appointments between " + WindowText(window) + ".\n");
    }
    return WriteResult(table);
}
} // namespace

std::optional<ListWindow> WindowOrMessage(const Arguments& arguments)
{
    const std::optional<ListWindow> window = WindowOf(arguments, LocalNow());
    if (!window)
    {
        WriteMessage("dtclient: --to lies before today; give --from as well\n");
    }
    return window;
}

void ReportDocumentError(const std::string& which, const DocumentError& error)
{
    WriteMessage(TroubleText(
        "Reading " + which,
        {error.what + ", at byte " + std::to_string(error.offset) + " of the document",
         "print the document with --xml and look there; a profile or store name with markup in it "
         "makes a document that cannot be read"}));
}

ExitCode PrintListing(const Arguments& arguments,
                      const ListWindow& window,
                      const std::wstring& document)
{
    if (document.empty())
    {
        WriteMessage(TroubleText(
            "Listing the appointments between " + WindowText(window),
            {"the server gave an empty answer, which means that no mail system stands behind it",
             "see the trace file \"strato-mapi.txt\" in \"%APPDATA%\\Talvo Connect\", and start "
             "the "
             "command again"}));
        return ExitCode::Failed;
    }

    const std::string text = Utf8FromWide(document);
    std::vector<Appointment> appointments;
    DocumentError error;
    const bool readable = ParseAppointments(text, appointments, error);
    // The raw document is what helps when it cannot be read, so it is printed all the same.
    if (!readable && arguments.form != OutputForm::Xml)
    {
        ReportDocumentError("the appointments", error);
        return ExitCode::Failed;
    }
    if (!Print(arguments, window, text, appointments))
    {
        return ExitCode::Failed;
    }
    if (!readable)
    {
        ReportDocumentError("the appointments", error);
        return ExitCode::Failed;
    }
    if (std::any_of(appointments.begin(), appointments.end(), IsFolderFailure))
    {
        WriteMessage(TroubleText(
            "Listing the appointments",
            {"the server could not read one of the calendar folders, so the list is incomplete",
             "start the command again; if it happens twice, see the trace file \"strato-mapi.txt\" "
             "in \"%APPDATA%\\Talvo Connect\""}));
        return ExitCode::Incomplete;
    }
    if (static_cast<std::ptrdiff_t>(appointments.size()) > kFolderLimit)
    {
        WriteMessage("The server stops reading a folder behind 2000 appointments: the list may be "
                     "cut. Ask for a shorter window.\n");
    }
    return ExitCode::Done;
}
} // namespace dtclient
