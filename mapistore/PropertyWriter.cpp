#include "PropertyWriter.h"

#include <wincrypt.h>

#include <cmath>
#include <cstdio>
#include <cstring>

#include "MapiTags64.h"
#include "PropertyNames.h"
#include "RecurrenceBlob.h"
#include "Text.h"

namespace mapistore
{
namespace
{

constexpr std::uint64_t kTicksPerSecond = 10000000;
// Larger values would make the document unreadable.
constexpr size_t kLargestInline = size_t{16} * 1024;

bool IsNeverStored(ULONG id)
{
    switch (id)
    {
    case PROP_ID(PR_ENTRYID):
    case PROP_ID(PR_PARENT_ENTRYID):
    case PROP_ID(PR_STORE_ENTRYID):
    case PROP_ID(PR_RECORD_KEY):
    case PROP_ID(PR_STORE_RECORD_KEY):
    case PROP_ID(PR_INSTANCE_KEY):
    case PROP_ID(PR_ATTACH_NUM):
    case PROP_ID(PR_ROWID):
    case PROP_ID(PR_OBJECT_TYPE):
        return true;
    default:
        return false;
    }
}

double Finite(double number)
{
    if (!std::isfinite(number))
    {
        throw CMapiError(MAPI_E_BAD_VALUE, L"a number that is none");
    }
    return number;
}

std::string ErrorText(SCODE code)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(code));
    return text;
}

} // namespace

std::string TimeText(std::uint64_t time)
{
    const std::uint64_t seconds = time / kTicksPerSecond;
    const auto fraction = static_cast<unsigned>(time % kTicksPerSecond);
    const std::uint64_t days = seconds / 86400;
    const auto inDay = static_cast<unsigned>(seconds % 86400);
    if (days >= DaysFrom1601(10000, 1, 1))
    {
        throw CMapiError(MAPI_E_BAD_VALUE, L"a time past the year 9999");
    }
    int year = 0;
    int month = 0;
    int day = 0;
    DateFrom1601(static_cast<std::uint32_t>(days), year, month, day);
    char text[64];
    std::snprintf(text,
                  sizeof(text),
                  "%04d-%02d-%02dT%02u:%02u:%02u",
                  year,
                  month,
                  day,
                  inDay / 3600,
                  inDay / 60 % 60,
                  inDay % 60);
    std::string result = text;
    if (fraction != 0)
    {
        std::snprintf(text, sizeof(text), ".%07u", fraction);
        result += text;
        result.erase(result.find_last_not_of('0') + 1);
    }
    return result + "Z";
}

std::string CPropertyWriter::KeyOf(ULONG tag) const
{
    const ULONG id = PROP_ID(tag);
    if (id < CNameMap::kFirst)
    {
        return IsNeverStored(id) ? std::string() : KeyOfTag(tag);
    }
    const PropertyName* name = m_names.NameOf(id);
    if (name == nullptr)
    {
        throw CMapiError(MAPI_E_UNEXPECTED_ID, L"no name stands for this identifier");
    }
    return KeyOfNamed(*name, PROP_TYPE(tag));
}

Json CPropertyWriter::LargeValue(const std::string& bytes, const char* ending) const
{
    const std::string name = "files/" + ContentName(bytes) + ending;
    std::wstring path = m_folderPath + L"\\files";
    CreateDirectoryW(path.c_str(), nullptr); // it is there already, as a rule
    path = m_folderPath + L"\\" + FromUtf8(name);
    for (wchar_t& unit : path)
    {
        unit = unit == L'/' ? L'\\' : unit;
    }
    // The name tells the content, so a file that is there is the right one.
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES && !WriteAndRename(path, bytes))
    {
        throw CMapiError(MAPI_E_DISK_ERROR, L"a value's file cannot be written");
    }
    return Json{{"file", name}};
}

Json CPropertyWriter::ValueOf(const CValue& value) const
{
    const ULONG type = value.Type();
    if ((type & MV_FLAG) != 0)
    {
        Json list = Json::array();
        for (const CValue& item : value.Items())
        {
            list.push_back(ValueOf(item));
        }
        return list;
    }
    switch (type)
    {
    case PT_ERROR:
        return Json{{"error", ErrorText(value.AsError())}};
    case PT_I2:
        return static_cast<std::int16_t>(value.AsBits());
    case PT_LONG:
        return value.AsLong();
    case PT_I8:
        // Not every reader of JSON keeps 64 bits of a number.
        return std::to_string(static_cast<std::int64_t>(value.AsBits()));
    case PT_R4:
        return Finite(static_cast<double>(value.AsFloat()));
    case PT_DOUBLE:
    case PT_APPTIME:
        return Finite(value.AsDouble());
    case PT_CURRENCY:
        return static_cast<double>(static_cast<std::int64_t>(value.AsBits())) / 10000.0;
    case PT_BOOLEAN:
        return value.AsBool();
    case PT_SYSTIME:
        return TimeText(value.AsBits());
    case PT_CLSID: {
        GUID guid{};
        std::memcpy(&guid, value.View().data(), sizeof(guid));
        return GuidText(guid);
    }
    case PT_UNICODE: {
        const std::string text = ToUtf8(value.AsText());
        return text.size() > kLargestInline ? LargeValue(text, ".txt") : Json(text);
    }
    default: {
        const std::string bytes = value.Bytes();
        return bytes.size() > kLargestInline ? LargeValue(bytes, ".bin")
                                             : Json(HexText(bytes.data(), bytes.size()));
    }
    }
}

Json CPropertyWriter::BagOf(const CPropertyBag& bag) const
{
    Json object = Json::object();
    for (const CValue& value : bag)
    {
        const std::string key = KeyOf(value.Tag());
        if (!key.empty())
        {
            object[key] = ValueOf(value);
        }
    }
    return object;
}

Json CPropertyWriter::RecipientsOf(const MessageBody& body) const
{
    Json list = Json::array();
    for (const CPropertyBag& recipient : body.recipients)
    {
        Json one = BagOf(recipient);
        const CValue* entry = recipient.Find(PROP_ID(PR_ENTRYID));
        if (entry != nullptr && entry->Type() == PT_BINARY)
        {
            const std::string bytes = entry->Bytes();
            one["recipient"] = HexText(bytes.data(), bytes.size());
        }
        list.push_back(std::move(one));
    }
    return list;
}

Json CPropertyWriter::AttachmentsOf(const MessageBody& body) const
{
    Json list = Json::array();
    for (const Attachment& attachment : body.attachments)
    {
        Json one = Json::object();
        one["properties"] = BagOf(attachment.props);
        if (attachment.message)
        {
            Json message = Json::object();
            WriteBody(message, *attachment.message);
            one["message"] = std::move(message);
        }
        list.push_back(std::move(one));
    }
    return list;
}

void CPropertyWriter::WriteBody(Json& out, const MessageBody& body) const
{
    CPropertyBag rest = body.props;
    out["class"] = ToUtf8(rest.TextOf(PROP_ID(PR_MESSAGE_CLASS_W)));
    rest.Remove(PROP_ID(PR_MESSAGE_CLASS_W));
    out["properties"] = BagOf(rest);
    if (!body.recipients.empty())
    {
        out["recipients"] = RecipientsOf(body);
    }
    if (!body.attachments.empty())
    {
        out["attachments"] = AttachmentsOf(body);
    }
}

void CPropertyWriter::RemoveId(Json& properties, ULONG id) const
{
    for (auto member = properties.begin(); member != properties.end();)
    {
        std::string problem;
        const std::optional<PropertyKey> key = ReadPropertyKey(member.key(), problem);
        const bool same =
            key && (key->isNamed ? m_names.Find(key->name) == id : PROP_ID(key->tag) == id);
        if (same)
        {
            member = properties.erase(member);
        }
        else
        {
            ++member;
        }
    }
}

void CPropertyWriter::Change(Json& properties,
                             const std::vector<CValue>& set,
                             const std::vector<ULONG>& removed) const
{
    for (const ULONG id : removed)
    {
        RemoveId(properties, id);
    }
    for (const CValue& value : set)
    {
        const std::string key = KeyOf(value.Tag());
        if (!key.empty())
        {
            RemoveId(properties, value.Id());
            properties[key] = ValueOf(value);
        }
    }
}

std::string ContentName(std::string_view bytes)
{
    HCRYPTPROV provider = 0;
    HCRYPTHASH hash = 0;
    BYTE digest[32] = {};
    DWORD cb = sizeof(digest);
    bool good = CryptAcquireContextW(
                    &provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) != FALSE;
    good = good && CryptCreateHash(provider, CALG_SHA_256, 0, 0, &hash) != FALSE;
    const auto* data = reinterpret_cast<const BYTE*>(bytes.data());
    good = good && CryptHashData(hash, data, static_cast<DWORD>(bytes.size()), 0) != FALSE;
    good = good && CryptGetHashParam(hash, HP_HASHVAL, digest, &cb, 0) != FALSE;
    if (hash != 0)
    {
        CryptDestroyHash(hash);
    }
    if (provider != 0)
    {
        CryptReleaseContext(provider, 0);
    }
    if (!good)
    {
        throw CMapiError(MAPI_E_CALL_FAILED, L"the system makes no SHA-256");
    }
    std::string name = HexText(digest, 16);
    for (char& c : name)
    {
        c = c >= 'A' && c <= 'F' ? static_cast<char>(c + 0x20) : c;
    }
    return name;
}

bool WriteAndRename(const std::wstring& path, std::string_view content)
{
    constexpr DWORD kPiece = 16 * 1024 * 1024;
    const std::wstring fresh = path + L"." + std::to_wstring(GetCurrentProcessId()) + L".new";
    HANDLE file = CreateFileW(fresh.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    bool good = true;
    while (good && !content.empty())
    {
        DWORD cb = 0;
        const auto piece = content.size() < kPiece ? static_cast<DWORD>(content.size()) : kPiece;
        good = WriteFile(file, content.data(), piece, &cb, nullptr) != FALSE && cb != 0;
        content.remove_prefix(cb);
    }
    // Before the rename: a name must never point at content that is not on the disk.
    good = good && FlushFileBuffers(file) != FALSE;
    CloseHandle(file);
    // A reader that does not share deletion (a virus scanner, an editor) is soon done; under Wine 8
    // any reader is one, since it replaces no file that is open.
    constexpr int kTries = 500;
    bool renamed = false;
    for (int i = 0; good && !renamed && i < kTries; ++i)
    {
        renamed = MoveFileExW(fresh.c_str(),
                              path.c_str(),
                              MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
        if (!renamed)
        {
            const DWORD error = GetLastError();
            good = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
            Sleep(20);
        }
    }
    if (!renamed)
    {
        DeleteFileW(fresh.c_str());
    }
    return renamed;
}

} // namespace mapistore
