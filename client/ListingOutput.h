#pragma once

#include <optional>
#include <string>
#include <vector>

#include "AppointmentDocument.h"
#include "Arguments.h"
#include "Commands.h"

namespace dtclient
{
/// The window that a listing asks for, judged before the server is started. Nothing when it would end
/// before it begins, which it then tells as a wrong usage.
std::optional<ListWindow> WindowOrMessage(const Arguments& arguments);

/// Prints an answer to a listing in the form that was asked for, and says on standard error what a
/// reader has to know about it: nothing found, a folder that failed, a list that was cut.
ExitCode PrintListing(const Arguments& arguments,
                      const ListWindow& window,
                      const std::wstring& document);

/// Says that a document cannot be read, and where.
void ReportDocumentError(const std::string& which, const DocumentError& error);
} // namespace dtclient
