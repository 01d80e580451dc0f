#include "TextEdit.h"

#include <algorithm>
#include <tuple>

namespace mapistore
{
namespace
{

constexpr std::string_view kBlank = " \t\r\n";

bool IsBlank(char c)
{
    return kBlank.find(c) != std::string_view::npos;
}

/// `text` on lines of its own, each moved in by `indent` blanks.
std::string Indented(const std::string& text, size_t indent)
{
    const std::string blanks(indent, ' ');
    std::string result = blanks;
    for (const char c : text)
    {
        result.push_back(c);
        if (c == '\n')
        {
            result += blanks;
        }
    }
    return result;
}

} // namespace

void CTextEdit::Replace(const TextRange& range, std::string text)
{
    m_splices.push_back({range.begin, range.end, std::move(text), kNone, 0, 0});
}

void CTextEdit::Append(const TextRange& array, const std::string& element)
{
    std::uint64_t last = array.end - 1; // the closing bracket
    while (IsBlank(m_text[last - 1]))
    {
        --last;
    }
    const bool isFirst = last == array.begin + 1;
    // Messages and folders stand four levels down in a document of two blanks a level.
    const std::string body = Indented(element, 8);
    const std::string before = isFirst ? "\n" : ",\n";
    const std::string after = isFirst ? "\n      " : "";
    const size_t number = m_places.size();
    m_places.emplace_back();
    const std::uint64_t until = isFirst ? array.end - 1 : last;
    m_splices.push_back(
        {last, until, before + body + after, number, before.size() + 8, body.size() - 8});
}

/// Where the element behind one that ends here begins; its own end when it is the last.
std::uint64_t CTextEdit::NextElement(std::uint64_t end) const
{
    std::uint64_t next = end;
    while (IsBlank(m_text[next]))
    {
        ++next;
    }
    if (m_text[next] != ',')
    {
        return end;
    }
    ++next;
    while (IsBlank(m_text[next]))
    {
        ++next;
    }
    return next;
}

void CTextEdit::Remove(std::vector<TextRange> elements)
{
    std::sort(elements.begin(), elements.end(), [](const TextRange& left, const TextRange& right) {
        return left.begin < right.begin;
    });
    // Neighbours go in one piece, so that each comma goes once, and the last of an array takes the one
    // before its first neighbour with it.
    for (size_t i = 0; i < elements.size();)
    {
        TextRange run = elements[i++];
        while (i < elements.size() && elements[i].begin == NextElement(run.end))
        {
            run.end = elements[i++].end;
        }
        RemoveRun(run);
    }
}

void CTextEdit::RemoveRun(const TextRange& run)
{
    std::uint64_t begin = run.begin;
    const std::uint64_t end = NextElement(run.end);
    if (end == run.end)
    {
        while (IsBlank(m_text[begin - 1]))
        {
            --begin;
        }
        if (m_text[begin - 1] == ',')
        {
            --begin;
        }
    }
    m_splices.push_back({begin, end, "", kNone, 0, 0});
}

void CTextEdit::AddMembers(const TextRange& object, const std::string& members)
{
    std::uint64_t last = object.end - 1;
    while (IsBlank(m_text[last - 1]))
    {
        --last;
    }
    const bool isEmpty = last == object.begin + 1;
    m_splices.push_back(
        {last, last, isEmpty ? "\n" + members + "\n" : ",\n" + members, kNone, 0, 0});
}

void CTextEdit::CountMoves()
{
    m_moves.assign(1, 0);
    for (const Splice& splice : m_splices)
    {
        m_moves.push_back(m_moves.back() + static_cast<std::int64_t>(splice.text.size()) -
                          static_cast<std::int64_t>(splice.end - splice.begin));
    }
}

std::uint64_t CTextEdit::Moved(std::uint64_t place, bool isEnd) const
{
    const auto found =
        std::partition_point(m_splices.begin(), m_splices.end(), [&](const Splice& splice) {
            // What was put in at a place belongs behind the end of the range before it.
            return isEnd ? splice.end < place || (splice.end == place && splice.begin < splice.end)
                         : splice.end <= place;
        });
    const std::int64_t move = m_moves[static_cast<size_t>(found - m_splices.begin())];
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(place) + move);
}

void CTextEdit::MoveAll(TextRange& range) const
{
    const TextRange before = range;
    range.begin = Moved(before.begin, false);
    range.end = Moved(before.end, true);
}

std::string CTextEdit::Finish()
{
    std::sort(m_splices.begin(), m_splices.end(), [](const Splice& left, const Splice& right) {
        return std::tie(left.begin, left.end) < std::tie(right.begin, right.end);
    });
    CountMoves();
    std::string result;
    result.reserve(m_text.size() + static_cast<size_t>(std::max<std::int64_t>(m_moves.back(), 0)));
    std::uint64_t done = 0;
    for (const Splice& splice : m_splices)
    {
        result.append(m_text.substr(done, splice.begin - done));
        if (splice.appended != kNone)
        {
            const std::uint64_t begin = result.size() + splice.elementOffset;
            m_places[splice.appended] = {begin, begin + splice.elementSize};
        }
        result += splice.text;
        done = splice.end;
    }
    result.append(m_text.substr(done));

    MoveAll(m_document.revisionRange);
    MoveAll(m_document.nextIdRange);
    if (m_document.namedIdsRange.end != 0)
    {
        MoveAll(m_document.namedIdsRange);
    }
    for (auto* map : {&m_document.messageArrays, &m_document.folderArrays})
    {
        for (auto& [id, range] : *map)
        {
            MoveAll(range);
        }
    }
    for (auto* map : {&m_document.messageRanges, &m_document.folderRanges})
    {
        for (auto& [id, range] : *map)
        {
            MoveAll(range);
        }
    }
    return result;
}

} // namespace mapistore
