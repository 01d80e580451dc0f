#include "PropertyReader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "MapiTags64.h"
#include "PropertyNames.h"
#include "RecurrenceReader.h"
#include "Text.h"
#include "ValueFile.h"

namespace mapistore
{
namespace
{

constexpr unsigned char kGlobalIdHead[16] = {
    0x04, 0x00, 0x00, 0x00, 0x82, 0x00, 0xE0, 0x00, 0x74, 0xC5, 0xB7, 0x10, 0x1A, 0x82, 0xE0, 0x08};

bool IsComputed(ULONG id)
{
    static constexpr ULONG kComputed[] = {PROP_ID(PR_ENTRYID),
                                          PROP_ID(PR_PARENT_ENTRYID),
                                          PROP_ID(PR_STORE_ENTRYID),
                                          PROP_ID(PR_RECORD_KEY),
                                          PROP_ID(PR_STORE_RECORD_KEY),
                                          PROP_ID(PR_INSTANCE_KEY),
                                          PROP_ID(PR_ATTACH_NUM),
                                          PROP_ID(PR_ROWID)};
    return std::find(std::begin(kComputed), std::end(kComputed), id) != std::end(kComputed);
}

void Put32(std::string& bytes, std::uint32_t value)
{
    bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
}

/// A whole number, plainly or as "0x..." text.
std::int64_t ReadWhole(const CPlace& place, std::int64_t least, std::int64_t most)
{
    if (!place.Node().IsText())
    {
        return place.Whole(least, most);
    }
    const std::string text(place.Text());
    char* end = nullptr;
    const bool isHex = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    errno = 0;
    const unsigned long long bits = isHex ? std::strtoull(text.c_str() + 2, &end, 16) : 0;
    // Hexadecimal text gives the bits, so that 0xFFFFFFFF is -1 in 32 bits.
    const auto widest = static_cast<unsigned long long>(most) * 2 + 1;
    if (!isHex || text.size() == 2 || *end != '\0' || errno != 0 || bits > widest)
    {
        place.Fail("expected a whole number from " + std::to_string(least) + " to " +
                   std::to_string(most) + ", or hexadecimal text");
    }
    return bits > static_cast<unsigned long long>(most)
               ? static_cast<std::int64_t>(bits - widest - 1)
               : static_cast<std::int64_t>(bits);
}

double ReadReal(const CPlace& place)
{
    const JsonNode& node = place.Node();
    switch (node.kind)
    {
    case JsonNode::Kind::Real:
        return node.real;
    case JsonNode::Kind::Integer:
        return static_cast<double>(node.integer);
    case JsonNode::Kind::Unsigned:
        return static_cast<double>(node.natural);
    default:
        place.Fail("expected a number");
    }
}

std::int64_t ReadLongLong(const CPlace& place)
{
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    const JsonNode& node = place.Node();
    const bool isDecimal = node.IsText() && !node.text.empty() &&
                           node.text.find_first_not_of("-0123456789") == std::string_view::npos;
    if (isDecimal)
    {
        char* end = nullptr;
        errno = 0;
        const std::string text(node.text);
        const long long value = std::strtoll(text.c_str(), &end, 10);
        if (*end != '\0' || errno != 0)
        {
            place.Fail("expected a whole number of 64 bits");
        }
        return value;
    }
    return ReadWhole(place, kLeast, kMost);
}

} // namespace

std::string MakeGlobalObjectId(std::string_view uid)
{
    const std::string data = std::string("vCal-Uid") + std::string("\1\0\0\0", 4) +
                             std::string(uid) + std::string(1, '\0');
    std::string bytes(reinterpret_cast<const char*>(kGlobalIdHead), sizeof(kGlobalIdHead));
    bytes.append(20, '\0'); // date of the instance, creation time, reserved
    Put32(bytes, static_cast<std::uint32_t>(data.size()));
    return bytes + data;
}

ULONG CPropertyReader::ReadKey(const CPlace& place)
{
    const std::string key(place.Node().key);
    const auto known = m_keys.find(key);
    if (known != m_keys.end())
    {
        return known->second;
    }
    std::string problem;
    const std::optional<PropertyKey> read = ReadPropertyKey(key, problem);
    if (!read)
    {
        place.FailAtKey(problem);
    }
    ULONG tag = read->tag;
    if (read->isNamed)
    {
        const ULONG id = m_names.Make(read->name);
        if (id == 0)
        {
            place.FailAtKey("no identifier is left for another named property");
        }
        tag = PROP_TAG(read->type, id);
    }
    else if (IsComputed(PROP_ID(tag)))
    {
        place.FailAtKey("this property is computed and cannot be stored");
    }
    // Text is kept wide, whatever width it is asked for in.
    if (PROP_TYPE(tag) == PT_STRING8)
    {
        tag = ChangeType(tag, PT_UNICODE);
    }
    else if (PROP_TYPE(tag) == PT_MV_STRING8)
    {
        tag = ChangeType(tag, PT_MV_UNICODE);
    }
    m_keys.emplace(key, tag);
    return tag;
}

CPropertyBag CPropertyReader::ReadBag(const CPlace& place, std::string_view special)
{
    place.RequireObject();
    CPropertyBag bag;
    bag.Reserve(place.Node().count);
    for (const JsonNode* member = place.Node().first; member != nullptr; member = member->next)
    {
        if (member->key == "comment" || (!special.empty() && member->key == special))
        {
            continue;
        }
        const CPlace at(place, *member);
        const ULONG tag = ReadKey(at);
        if (bag.Find(PROP_ID(tag)) != nullptr)
        {
            at.FailAtKey("this property stands here twice");
        }
        bag.Set(ReadValue(at, tag));
    }
    return bag;
}

CValue CPropertyReader::ReadValue(const CPlace& place, ULONG tag)
{
    if (place.Node().IsObject() && place.Node().Find("error") != nullptr)
    {
        place.AllowKeys({"error"});
        const CPlace code(place, place.Need("error"));
        return CValue::Error(tag, static_cast<SCODE>(ReadWhole(code, INT32_MIN, INT32_MAX)));
    }
    if ((PROP_TYPE(tag) & MV_FLAG) != 0)
    {
        return ReadList(place, tag);
    }
    switch (PROP_TYPE(tag))
    {
    case PT_UNICODE:
        return place.Node().IsObject() ? ReadFile(place, tag)
                                       : CValue::Text(tag, FromUtf8(place.Text()));
    case PT_I2:
        return CValue::Raw(tag, static_cast<std::uint16_t>(ReadWhole(place, INT16_MIN, INT16_MAX)));
    case PT_LONG:
        return CValue::Long(tag, static_cast<LONG>(ReadWhole(place, INT32_MIN, INT32_MAX)));
    case PT_I8:
        return CValue::Raw(tag, static_cast<std::uint64_t>(ReadLongLong(place)));
    case PT_R4: {
        const auto number = static_cast<float>(ReadReal(place));
        std::uint32_t bits = 0;
        std::memcpy(&bits, &number, sizeof(bits));
        return CValue::Raw(tag, bits);
    }
    case PT_DOUBLE:
    case PT_APPTIME:
        return CValue::Double(tag, ReadReal(place));
    case PT_CURRENCY:
        return CValue::Raw(tag,
                           static_cast<std::uint64_t>(std::llround(ReadReal(place) * 10000.0)));
    case PT_BOOLEAN:
        return CValue::Boolean(tag, place.Truth());
    case PT_SYSTIME:
        return CValue::Time(tag, ReadTime(place));
    case PT_CLSID: {
        const std::optional<GUID> guid = ReadGuid(place.Text());
        if (!guid)
        {
            place.Fail("expected a GUID in braces");
        }
        return CValue::Guid(tag, *guid);
    }
    default:
        return ReadBinary(place, tag);
    }
}

CValue CPropertyReader::ReadList(const CPlace& place, ULONG tag)
{
    place.RequireArray();
    const ULONG single = ChangeType(tag, PROP_TYPE(tag) & ~static_cast<ULONG>(MV_FLAG));
    std::vector<CValue> items;
    size_t index = 0;
    for (const JsonNode* item = place.Node().first; item != nullptr; item = item->next)
    {
        items.push_back(ReadValue(CPlace(place, *item, index++), single));
    }
    return CValue::List(tag, std::move(items));
}

CValue CPropertyReader::ReadFile(const CPlace& place, ULONG tag)
{
    place.AllowKeys({"file"});
    const CPlace at(place, place.Need("file"));
    const std::string_view path = at.Text();
    const bool climbs =
        path.find("..") != std::string_view::npos || path.find('\\') != std::string_view::npos ||
        path.find(':') != std::string_view::npos || path.empty() || path.front() == '/';
    if (climbs)
    {
        at.Fail("expected a path below the store folder");
    }
    auto file = CValueFile::Find(m_folderPath, FromUtf8(path));
    if (!file)
    {
        at.Fail("there is no such file");
    }
    return CValue::File(tag, std::move(file));
}

std::string CPropertyReader::ReadReference(const CPlace& place, ObjectKind kind)
{
    const auto id = static_cast<std::uint64_t>(place.Whole(1, kMaxId));
    const auto known = m_ids.ids.find(id);
    if (known == m_ids.ids.end() || known->second.kind != kind)
    {
        place.Fail("no such object has the identifier " + std::to_string(id));
    }
    static constexpr ULONG kTypes[] = {
        MAPI_STORE, MAPI_FOLDER, MAPI_MESSAGE, MAPI_ABCONT, MAPI_MAILUSER};
    ULONG type = kTypes[static_cast<int>(kind)];
    if (known->second.isList)
    {
        type = MAPI_DISTLIST;
    }
    return MakeEntryId({known->second.uid, type, id, false});
}

CValue CPropertyReader::ReadBinary(const CPlace& place, ULONG tag)
{
    if (!place.Node().IsObject())
    {
        std::string bytes;
        if (!ParseHex(place.Text(), bytes))
        {
            place.Fail("expected an even number of hexadecimal digits");
        }
        return CValue::Binary(tag, bytes);
    }
    if (place.Node().count != 1 && place.Node().Find("comment") == nullptr)
    {
        place.Fail("expected one key that tells what the value is");
    }
    struct Form
    {
        std::string_view key;
        ObjectKind kind;
    };
    static constexpr Form kForms[] = {{"folder", ObjectKind::Folder},
                                      {"message", ObjectKind::Message},
                                      {"store", ObjectKind::Store},
                                      {"entry", ObjectKind::Entry},
                                      {"container", ObjectKind::Container}};
    for (const Form& form : kForms)
    {
        if (const JsonNode* reference = place.Node().Find(form.key))
        {
            return CValue::Binary(tag, ReadReference(CPlace(place, *reference), form.kind));
        }
    }
    if (place.Node().Find("file") != nullptr)
    {
        return ReadFile(place, tag);
    }
    if (const JsonNode* zone = place.Node().Find("timeZone"))
    {
        return CValue::Binary(tag, EncodeZone(ReadZone(CPlace(place, *zone))));
    }
    if (const JsonNode* recurrence = place.Node().Find("recurrence"))
    {
        return CValue::Binary(tag, EncodeRecurrence(ReadRecurrence(CPlace(place, *recurrence))));
    }
    if (const JsonNode* uid = place.Node().Find("globalObjectId"))
    {
        return CValue::Binary(tag, MakeGlobalObjectId(CPlace(place, *uid).Text()));
    }
    if (const JsonNode* oneOff = place.Node().Find("oneOff"))
    {
        const CPlace at(place, *oneOff);
        at.AllowKeys({"name", "type", "address"});
        return CValue::Binary(tag,
                              MakeOneOff({FromUtf8(at.TextOf("name")),
                                          FromUtf8(at.TextOf("type")),
                                          FromUtf8(at.TextOf("address"))}));
    }
    place.Fail("expected hexadecimal text or an object that tells what the value is");
}

} // namespace mapistore
