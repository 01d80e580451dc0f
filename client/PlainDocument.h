#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "AppointmentDocument.h"

namespace dtclient
{
/// A document of one level: the profile of the session, or one contact.
struct PlainDocument
{
    std::string root;
    std::vector<std::pair<std::string, std::string>> values; ///< Name and text, as in the document.

    /// Text of the first value of that name; empty when there is none.
    [[nodiscard]] std::string Find(std::string_view name) const;
};

/// Reads "<Root><Name>value</Name>...</Root>", escaping undone.
///
/// Errors: what stands in `error`.
bool ParsePlainDocument(std::string_view document, PlainDocument& result, DocumentError& error);

/// "Name  value", a line each, names padded to one width.
std::string PlainDocumentTable(const PlainDocument& document);

/// {"Root": {"Name": "value", ...}}, indented by two blanks.
std::string PlainDocumentJson(const PlainDocument& document);

/// {"event": "...", "kind": "...", "Root": {...}} in one line.
std::string PlainEventJson(const std::string& event,
                           const std::string& kind,
                           const PlainDocument& document);

/// {"event": "...", "number": 0} in one line, for events that only concern another client.
std::string NumberEventJson(const std::string& event, std::uint32_t number);

/// {"event": "...", key: value} in one line.
std::string TextEventJson(const std::string& event,
                          const std::string& key,
                          const std::string& value);
} // namespace dtclient
