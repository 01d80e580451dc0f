#include "RandomRestriction.h"

#include <algorithm>

namespace mapitest
{
namespace
{

constexpr ULONG kFlags = 0x66100003;
constexpr ULONG kTruth = 0x6611000B;
constexpr ULONG kBytes = 0x66120102;
constexpr std::int64_t k2026 = 134116992000000000LL; // 2026-01-01, in 100 ns since 1601

const std::vector<std::wstring> kWords = {L"",
                                          L"a",
                                          L"A",
                                          L"abc",
                                          L"ABCdef",
                                          L"def",
                                          L"cde",
                                          L"\u00e9t\u00e9",
                                          L"\u00c9T\u00c9",
                                          L"ete",
                                          L"Zebra",
                                          L"zebra crossing",
                                          L"\u00e5",
                                          L"\u03a3\u03c3"};

int Pick(Rng& rng, int count)
{
    return static_cast<int>(rng() % static_cast<unsigned>(count));
}

template <class T>
std::optional<T> Maybe(Rng& rng, T value)
{
    return Pick(rng, 5) == 0 ? std::nullopt : std::optional<T>(value);
}

std::string Quoted(const std::wstring& text)
{
    std::string out = "\"";
    char unit[8];
    for (const wchar_t c : text)
    {
        std::snprintf(unit, sizeof(unit), "\\u%04x", c);
        out += unit;
    }
    return out + "\"";
}

std::wstring Lower(const std::wstring& text)
{
    std::wstring lower(text.size(), L'\0');
    if (!text.empty())
    {
        LCMapStringEx(LOCALE_NAME_INVARIANT,
                      LCMAP_LOWERCASE,
                      text.data(),
                      static_cast<int>(text.size()),
                      lower.data(),
                      static_cast<int>(lower.size()),
                      nullptr,
                      nullptr,
                      0);
    }
    return lower;
}

/// The few marks that the words above have.
std::wstring Unmarked(std::wstring text)
{
    for (wchar_t& c : text)
    {
        c = c == L'\u00e9' ? L'e' : (c == L'\u00c9' ? L'E' : (c == L'\u00e5' ? L'a' : c));
    }
    return text;
}

bool Relation(ULONG relop, int order)
{
    const bool results[] = {order<0, order <= 0, order> 0, order >= 0, order == 0, order != 0};
    return results[relop];
}

template <class T>
int Order(const T& left, const T& right)
{
    return left < right ? -1 : (right < left ? 1 : 0);
}

std::shared_ptr<Made> MakeContent(Rng& rng)
{
    auto made = std::make_shared<Made>();
    const bool onSubject = Pick(rng, 2) == 0;
    const ULONG levels[] = {FL_FULLSTRING, FL_SUBSTRING, FL_PREFIX};
    const ULONG level = levels[Pick(rng, 3)];
    const ULONG loose[] = {
        0, FL_IGNORECASE, FL_IGNORENONSPACE, FL_IGNORECASE | FL_IGNORENONSPACE, FL_LOOSE};
    const ULONG ignore = loose[Pick(rng, 5)];
    made->text = kWords[static_cast<size_t>(Pick(rng, static_cast<int>(kWords.size())))];
    made->value.ulPropTag = onSubject ? PR_SUBJECT_W : PR_COMMENT_W;
    made->value.Value.lpszW = made->text.data();
    made->res.rt = RES_CONTENT;
    made->res.res.resContent = {level | ignore, made->value.ulPropTag, &made->value};
    const std::wstring pattern = made->text;
    made->means = [=](const Sample& sample) {
        const auto& held = onSubject ? sample.subject : sample.comment;
        if (!held)
        {
            return false;
        }
        std::wstring text = *held;
        std::wstring wanted = pattern;
        if ((ignore & (FL_IGNORENONSPACE | FL_LOOSE)) != 0)
        {
            text = Unmarked(text);
            wanted = Unmarked(wanted);
        }
        if ((ignore & (FL_IGNORECASE | FL_LOOSE)) != 0)
        {
            text = Lower(text);
            wanted = Lower(wanted);
        }
        if (level == FL_SUBSTRING)
        {
            return text.find(wanted) != std::wstring::npos;
        }
        return level == FL_PREFIX ? text.rfind(wanted, 0) == 0 : text == wanted;
    };
    return made;
}

std::shared_ptr<Made> MakeProperty(Rng& rng)
{
    auto made = std::make_shared<Made>();
    const auto relop = static_cast<ULONG>(Pick(rng, 6));
    made->res.rt = RES_PROPERTY;
    switch (Pick(rng, 5))
    {
    case 0: {
        const int number = Pick(rng, 5) - 2;
        made->value.ulPropTag = PR_IMPORTANCE;
        made->value.Value.l = number;
        made->means = [=](const Sample& s) {
            return s.importance && Relation(relop, Order(*s.importance, number));
        };
        break;
    }
    case 1: {
        made->text = kWords[static_cast<size_t>(Pick(rng, static_cast<int>(kWords.size())))];
        made->value.ulPropTag = PR_SUBJECT_W;
        made->value.Value.lpszW = made->text.data();
        const std::wstring wanted = Lower(made->text);
        made->means = [=](const Sample& s) {
            return s.subject && Relation(relop, Order(Lower(*s.subject), wanted));
        };
        break;
    }
    case 2: {
        const bool truth = Pick(rng, 2) == 1;
        made->value.ulPropTag = kTruth;
        made->value.Value.b = truth ? 1 : 0;
        made->means = [=](const Sample& s) {
            return s.truth && Relation(relop, Order(*s.truth, truth));
        };
        break;
    }
    case 3: {
        const std::int64_t time = static_cast<std::int64_t>(Pick(rng, 20)) * 60;
        const std::int64_t ticks = k2026 + time * 10000000;
        made->value.ulPropTag = PR_CLIENT_SUBMIT_TIME;
        made->value.Value.li.QuadPart = ticks;
        made->means = [=](const Sample& s) {
            return s.time && Relation(relop, Order(*s.time, time));
        };
        break;
    }
    default: {
        made->bytes =
            std::string(static_cast<size_t>(Pick(rng, 4)), static_cast<char>('a' + Pick(rng, 3)));
        made->value.ulPropTag = kBytes;
        made->value.Value.bin = {static_cast<ULONG>(made->bytes.size()),
                                 reinterpret_cast<BYTE*>(made->bytes.data())};
        const std::string wanted = made->bytes;
        made->means = [=](const Sample& s) {
            return s.bytes && Relation(relop, Order(*s.bytes, wanted));
        };
        break;
    }
    }
    made->res.res.resProperty = {relop, made->value.ulPropTag, &made->value};
    return made;
}

std::shared_ptr<Made> MakeSmall(Rng& rng)
{
    auto made = std::make_shared<Made>();
    switch (Pick(rng, 4))
    {
    case 0: {
        const auto mask = static_cast<ULONG>(1 << Pick(rng, 8));
        const ULONG relation = Pick(rng, 2) == 0 ? BMR_EQZ : BMR_NEZ;
        made->res.rt = RES_BITMASK;
        made->res.res.resBitMask = {relation, kFlags, mask};
        made->means = [=](const Sample& s) {
            return s.flags && ((static_cast<ULONG>(*s.flags) & mask) == 0) == (relation == BMR_EQZ);
        };
        break;
    }
    case 1: {
        const ULONG tags[] = {
            PR_SUBJECT_W, PR_IMPORTANCE, kTruth, PROP_TAG(PT_LONG, PROP_ID(PR_SUBJECT_W))};
        const int which = Pick(rng, 4);
        made->res.rt = RES_EXIST;
        made->res.res.resExist = {0, tags[which], 0};
        made->means = [=](const Sample& s) {
            const bool held[] = {
                s.subject.has_value(), s.importance.has_value(), s.truth.has_value(), false};
            return held[which];
        };
        break;
    }
    case 2: {
        const auto relop = static_cast<ULONG>(Pick(rng, 6));
        const auto cb = static_cast<ULONG>(Pick(rng, 12));
        made->res.rt = RES_SIZE;
        made->res.res.resSize = {relop, PR_SUBJECT_W, cb};
        made->means = [=](const Sample& s) {
            return s.subject && Relation(relop, Order<size_t>((s.subject->size() + 1) * 2, cb));
        };
        break;
    }
    default: {
        const auto relop = static_cast<ULONG>(Pick(rng, 6));
        made->res.rt = RES_COMPAREPROPS;
        made->res.res.resCompareProps = {relop, PR_SUBJECT_W, PR_COMMENT_W};
        made->means = [=](const Sample& s) {
            return s.subject && s.comment &&
                   Relation(relop, Order(Lower(*s.subject), Lower(*s.comment)));
        };
        break;
    }
    }
    return made;
}

} // namespace

Sample MakeSample(Rng& rng)
{
    Sample sample;
    sample.importance = Maybe(rng, Pick(rng, 5) - 2);
    sample.flags = Maybe(rng, Pick(rng, 256));
    sample.subject =
        Maybe(rng, kWords[static_cast<size_t>(Pick(rng, static_cast<int>(kWords.size())))]);
    sample.comment =
        Maybe(rng, kWords[static_cast<size_t>(Pick(rng, static_cast<int>(kWords.size())))]);
    sample.truth = Maybe(rng, Pick(rng, 2) == 1);
    sample.time = Maybe(rng, static_cast<std::int64_t>(Pick(rng, 20)) * 60);
    sample.bytes = Maybe(
        rng, std::string(static_cast<size_t>(Pick(rng, 4)), static_cast<char>('a' + Pick(rng, 3))));
    for (int i = Pick(rng, 4); i > 0; --i)
    {
        sample.recipientTypes.push_back(1 + Pick(rng, 3));
    }
    return sample;
}

std::string MessageJson(int id, const Sample& sample)
{
    std::string props;
    const auto add = [&](const std::string& key, const std::string& value) {
        props += (props.empty() ? "\"" : ", \"") + key + "\": " + value;
    };
    if (sample.importance)
    {
        add("PR_IMPORTANCE", std::to_string(*sample.importance));
    }
    if (sample.flags)
    {
        add("0x66100003", std::to_string(*sample.flags));
    }
    if (sample.subject)
    {
        add("PR_SUBJECT_W", Quoted(*sample.subject));
    }
    if (sample.comment)
    {
        add("PR_COMMENT_W", Quoted(*sample.comment));
    }
    if (sample.truth)
    {
        add("0x6611000B", *sample.truth ? "true" : "false");
    }
    if (sample.time)
    {
        char text[40];
        std::snprintf(
            text, sizeof(text), "\"2026-01-01T00:%02d:00Z\"", static_cast<int>(*sample.time / 60));
        add("PR_CLIENT_SUBMIT_TIME", text);
    }
    if (sample.bytes)
    {
        add("0x66120102", "\"" + HexOf(*sample.bytes) + "\"");
    }
    std::string recipients;
    for (const int type : sample.recipientTypes)
    {
        recipients += (recipients.empty() ? "" : ",") + std::string(R"({ "PR_RECIPIENT_TYPE": )") +
                      std::to_string(type) + " }";
    }
    return R"({ "id": )" + std::to_string(id) +
           R"(, "folder": 4, "class": "IPM.Note", "properties": { )" + props +
           R"( }, "recipients": [ )" + recipients + " ] }";
}

std::shared_ptr<Made> MakeRestriction(Rng& rng, int depth)
{
    const int kind = Pick(rng, depth > 3 ? 3 : 8);
    if (kind < 3)
    {
        return kind == 0 ? MakeContent(rng) : (kind == 1 ? MakeProperty(rng) : MakeSmall(rng));
    }
    auto made = std::make_shared<Made>();
    if (kind == 7)
    {
        const int type = 1 + Pick(rng, 4);
        auto inner = std::make_shared<Made>();
        inner->value.ulPropTag = PR_RECIPIENT_TYPE;
        inner->value.Value.l = type;
        inner->res.rt = RES_PROPERTY;
        inner->res.res.resProperty = {RELOP_EQ, PR_RECIPIENT_TYPE, &inner->value};
        made->res.rt = RES_SUBRESTRICTION;
        made->res.res.resSub = {PR_MESSAGE_RECIPIENTS, &inner->res};
        made->owned.push_back(inner);
        made->means = [=](const Sample& s) {
            return std::count(s.recipientTypes.begin(), s.recipientTypes.end(), type) != 0;
        };
        return made;
    }
    const int count = kind == 6 ? 1 : Pick(rng, 4);
    for (int i = 0; i < count; ++i)
    {
        made->owned.push_back(MakeRestriction(rng, depth + 1));
        made->children.push_back(made->owned.back()->res);
    }
    const auto parts = made->owned;
    if (kind == 6)
    {
        made->res.rt = RES_NOT;
        made->res.res.resNot = {0, made->children.data()};
        made->means = [=](const Sample& s) { return !parts[0]->means(s); };
    }
    else if (kind < 5)
    {
        made->res.rt = RES_AND;
        made->res.res.resAnd = {static_cast<ULONG>(count), made->children.data()};
        made->means = [=](const Sample& s) {
            return std::all_of(
                parts.begin(), parts.end(), [&](const auto& one) { return one->means(s); });
        };
    }
    else
    {
        made->res.rt = RES_OR;
        made->res.res.resOr = {static_cast<ULONG>(count), made->children.data()};
        made->means = [=](const Sample& s) {
            return std::any_of(
                parts.begin(), parts.end(), [&](const auto& one) { return one->means(s); });
        };
    }
    return made;
}

} // namespace mapitest
