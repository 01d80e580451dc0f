#include "BatchCommand.h"

#include <array>
#include <charconv>
#include <optional>

#include "DateText.h"
#include "HexInput.h"
#include "NarrowText.h"
#include "StandardStreams.h"
#include "Utf8Text.h"

namespace
{

enum Field : std::size_t
{
    kId,
    kPattern,
    kZone,
    kFirstTime,
    kWindowStart,
    kWindowEnd,
    kSubject,
    kLocation,
    kKeepAll,
    kFieldCount,
};

struct Case
{
    std::vector<std::uint8_t> pattern;
    std::vector<std::uint8_t> zone;
    SYSTEMTIME firstTime{};
    FILETIME windowStart{};
    FILETIME windowEnd{};
    WString subject;
    WString location;
    bool keepsAll = false;
};

using Fields = std::array<std::string_view, kFieldCount>;

/// False unless there are exactly as many fields as there should be.
bool Split(std::string_view line, Fields& fields)
{
    std::size_t begin = 0;
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        const std::size_t end = line.find('\t', begin);
        const bool isLast = i + 1 == fields.size();
        if ((end == std::string_view::npos) != isLast)
        {
            return false;
        }
        fields[i] = line.substr(begin, isLast ? std::string_view::npos : end - begin);
        begin = end + 1;
    }
    return true;
}

template <class T>
bool Take(std::optional<T>&& value, T& into)
{
    if (value.has_value())
    {
        into = std::move(*value);
    }
    return value.has_value();
}

/// Null when the case is good, else what is wrong with it.
const char* Read(std::string_view line, Case& c)
{
    Fields fields;
    if (!Split(line, fields))
    {
        return "not nine fields";
    }
    if (!Take(BytesOfHex(fields[kPattern]), c.pattern))
    {
        return "pattern is not hexadecimal";
    }
    if (!Take(BytesOfHex(fields[kZone]), c.zone))
    {
        return "zone is not hexadecimal";
    }
    if (!Take(TimeOfText(fields[kFirstTime]), c.firstTime))
    {
        return "first time is not YYYY-MM-DDTHH:MM:SS";
    }
    if (!Take(FileTimeOfText(fields[kWindowStart]), c.windowStart))
    {
        return "window start is no time";
    }
    if (!Take(FileTimeOfText(fields[kWindowEnd]), c.windowEnd))
    {
        return "window end is no time";
    }
    if (!Take(WideOfUtf8(fields[kSubject]), c.subject))
    {
        return "subject is not UTF-8";
    }
    if (!Take(WideOfUtf8(fields[kLocation]), c.location))
    {
        return "location is not UTF-8";
    }
    if (fields[kKeepAll] != "0" && fields[kKeepAll] != "1")
    {
        return "keep-all is neither 0 nor 1";
    }
    c.keepsAll = fields[kKeepAll] == "1";
    return nullptr;
}

void AppendNumber(std::string& out, std::uint32_t value)
{
    std::array<char, 10> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    out.append(digits.data(), end);
}

void AppendInstance(std::string& out,
                    std::string_view id,
                    std::uint32_t index,
                    const RecurInstance& instance)
{
    out += id;
    out += '\t';
    AppendNumber(out, index);
    out += '\t';
    AppendTime(out, instance.start);
    out += '\t';
    AppendTime(out, instance.end);
    out += '\t';
    AppendNumber(out, instance.subKey);
    out += '\t';
    AppendEscaped(out, instance.subject);
    out += '\t';
    AppendEscaped(out, instance.location);
    out += '\t';
    AppendNumber(out, instance.hasMeetingType);
    out += '\t';
    AppendNumber(out, instance.meetingType);
    out += '\n';
}

void AppendError(std::string& out, std::string_view id, const char* reason)
{
    out += id;
    out += "\terror\t";
    out += reason;
    out += '\n';
}

} // namespace

CBatchExpander::CBatchExpander(bool withTrace)
    : m_trace(withTrace ? std::make_unique<CTraceLines>() : nullptr)
{
}

void CBatchExpander::Expand(std::string_view line, std::string& out)
{
    const std::string_view id = line.substr(0, line.find('\t'));
    Case c;
    if (const char* const reason = Read(line, c))
    {
        AppendError(out, id, reason);
        return;
    }
    m_settings.KeepAll(c.keepsAll);
    std::uint32_t count = 0;
    CRecurrentRule rule(&m_settings);
    rule.SetInfo(1,
                 static_cast<std::uint32_t>(c.pattern.size()),
                 c.pattern.data(),
                 static_cast<std::uint32_t>(c.zone.size()),
                 c.zone.data(),
                 c.firstTime,
                 c.windowStart,
                 c.windowEnd,
                 c.subject,
                 c.location);
    rule.ParseRule(count, m_instances);
    AppendTrace(id, out);
    out += id;
    out += '\t';
    AppendNumber(out, count);
    out += '\n';
    std::uint32_t index = 0;
    for (const RecurInstance& instance : m_instances)
    {
        AppendInstance(out, id, index++, instance);
    }
}

void CBatchExpander::AppendTrace(std::string_view id, std::string& out)
{
    if (m_trace == nullptr)
    {
        return;
    }
    for (const CTraceLines::Line& line : m_trace->Take())
    {
        out += id;
        out += "\ttrace\t";
        AppendEscaped(out, WidenText(line.message));
        out += '\n';
    }
}

int RunBatch(bool withTrace)
{
    CBatchExpander expander(withTrace);
    CLineReader reader;
    std::string out;
    for (std::string_view line; reader.Next(line, [&out] { return FlushOutput(out); });)
    {
        expander.Expand(line, out);
        constexpr std::size_t kFlushBytes = 1U << 20;
        if (out.size() >= kFlushBytes && !FlushOutput(out))
        {
            return 1;
        }
    }
    return FlushOutput(out) ? 0 : 1;
}
