#pragma once

#include <string>
#include <vector>

#include "Document.h"

namespace mapistore
{

/// Changes to the text of a document that leave every other byte as it was written.
///
/// The changes are gathered, then made in one go. Places are those of the text before.
class CTextEdit
{
public:
    CTextEdit(std::string_view text, Document& document) : m_text(text), m_document(document) {}

    std::string_view Text() const { return m_text; }
    void Replace(const TextRange& range, std::string text);
    /// Puts an element behind the last one of an array.
    void Append(const TextRange& array, const std::string& element);
    /// Takes elements out of arrays, with the commas that separated them. In any order; none twice.
    void Remove(std::vector<TextRange> elements);
    void Remove(const TextRange& element) { Remove(std::vector<TextRange>{element}); }
    /// Puts members into an object, before its closing brace.
    void AddMembers(const TextRange& object, const std::string& members);

    /// Makes the changes and moves every range of the document along.
    std::string Finish();
    /// After `Finish`: the places of what `Append` put in, in the order of the calls.
    const std::vector<TextRange>& Appended() const { return m_places; }

private:
    struct Splice
    {
        std::uint64_t begin;
        std::uint64_t end;
        std::string text;
        size_t appended;      // number of the element in it, or none
        size_t elementOffset; // where in `text` the element begins
        size_t elementSize;
    };
    static constexpr size_t kNone = ~size_t{0};

    std::uint64_t NextElement(std::uint64_t end) const;
    void RemoveRun(const TextRange& run);
    void CountMoves();
    std::uint64_t Moved(std::uint64_t place, bool isEnd) const;
    void MoveAll(TextRange& range) const;

    std::string_view m_text;
    Document& m_document;
    std::vector<Splice> m_splices;
    std::vector<std::int64_t> m_moves; // by how much what stands behind so many splices moves
    std::vector<TextRange> m_places;
};

} // namespace mapistore
