#include "PlainDocument.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "ColumnText.h"
#include "TaggedReader.h"

namespace dtclient
{
namespace
{
using Json = nlohmann::ordered_json;

constexpr std::size_t kValueColumns = 100;

std::string Dump(const Json& json, int indent)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

Json Values(const PlainDocument& document)
{
    Json values = Json::object();
    for (const auto& [name, text] : document.values)
    {
        values[name] = text;
    }
    return values;
}
} // namespace

std::string PlainDocument::Find(std::string_view name) const
{
    const auto found = std::find_if(
        values.begin(), values.end(), [name](const auto& value) { return value.first == name; });
    return found == values.end() ? std::string() : found->second;
}

bool ParsePlainDocument(std::string_view document, PlainDocument& result, DocumentError& error)
{
    result = PlainDocument{};
    CTaggedReader reader(document);
    const auto fail = [&reader, &error](std::string what) {
        error.offset = reader.Offset();
        error.what = std::move(what);
        return false;
    };

    std::string_view name;
    if (!reader.PeekStart(name) || !reader.TakeStart(name))
    {
        return fail("the document does not begin with a tag");
    }
    result.root = name;
    while (reader.PeekStart(name))
    {
        TaggedValue value;
        if (!reader.TakeElement(name, value))
        {
            return fail("<" + std::string(name) + "> has no end");
        }
        result.values.emplace_back(name, UnescapeText(value.text));
    }
    if (!reader.TakeEnd(result.root))
    {
        return fail("expected </" + result.root + ">");
    }
    return reader.AtEnd() || fail("text behind the end of the document");
}

std::string PlainDocumentTable(const PlainDocument& document)
{
    std::size_t width = 0;
    for (const auto& [name, text] : document.values)
    {
        width = std::max(width, name.size());
    }
    std::string table;
    for (const auto& [name, text] : document.values)
    {
        const std::string value = CellText(text, kValueColumns);
        table += name;
        if (!value.empty())
        {
            table.append(width - name.size() + 2, ' ');
            table += value;
        }
        table += '\n';
    }
    return table;
}

std::string PlainDocumentJson(const PlainDocument& document)
{
    Json json = Json::object();
    json[document.root] = Values(document);
    return Dump(json, 2);
}

std::string PlainEventJson(const std::string& event,
                           const std::string& kind,
                           const PlainDocument& document)
{
    Json json = Json::object();
    json["event"] = event;
    json["kind"] = kind;
    json[document.root] = Values(document);
    return Dump(json, -1);
}

std::string NumberEventJson(const std::string& event, std::uint32_t number)
{
    Json json = Json::object();
    json["event"] = event;
    json["number"] = number;
    return Dump(json, -1);
}

std::string TextEventJson(const std::string& event,
                          const std::string& key,
                          const std::string& value)
{
    Json json = Json::object();
    json["event"] = event;
    json[key] = value;
    return Dump(json, -1);
}
} // namespace dtclient
