#include "RegistrarScript.h"

#include <algorithm>
#include <array>
#include <utility>

namespace
{

constexpr std::size_t kMaxDepth = 32;

struct Token
{
    WString text;
    bool quoted = false;
};

bool IsBlank(WCHAR c)
{
    return c == WTEXT(' ') || c == WTEXT('\t') || c == WTEXT('\r') || c == WTEXT('\n');
}

bool SameWord(WStringView left, WStringView right)
{
    const auto lower = [](WCHAR c) {
        return c >= WTEXT('A') && c <= WTEXT('Z') ? static_cast<WCHAR>(c + 32) : c;
    };
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(), [lower](WCHAR a, WCHAR b) {
            return lower(a) == lower(b);
        });
}

std::optional<ScriptRoot> RootOf(WStringView name)
{
    struct Root
    {
        WStringView shortName;
        WStringView longName;
        ScriptRoot root;
    };
    static constexpr std::array<Root, 5> kRoots = {{
        {WTEXT("HKCR"), WTEXT("HKEY_CLASSES_ROOT"), ScriptRoot::ClassesRoot},
        {WTEXT("HKCU"), WTEXT("HKEY_CURRENT_USER"), ScriptRoot::CurrentUser},
        {WTEXT("HKLM"), WTEXT("HKEY_LOCAL_MACHINE"), ScriptRoot::LocalMachine},
        {WTEXT("HKU"), WTEXT("HKEY_USERS"), ScriptRoot::Users},
        {WTEXT("HKCC"), WTEXT("HKEY_CURRENT_CONFIG"), ScriptRoot::CurrentConfig},
    }};
    for (const Root& root : kRoots)
    {
        if (SameWord(name, root.shortName) || SameWord(name, root.longName))
        {
            return root.root;
        }
    }
    return std::nullopt;
}

/// The digit's value, or 16 for what is no hexadecimal digit.
std::uint32_t DigitOf(WCHAR c)
{
    if (c >= WTEXT('0') && c <= WTEXT('9'))
    {
        return static_cast<std::uint32_t>(c - WTEXT('0'));
    }
    if (c >= WTEXT('a') && c <= WTEXT('f'))
    {
        return static_cast<std::uint32_t>(c - WTEXT('a')) + 10;
    }
    if (c >= WTEXT('A') && c <= WTEXT('F'))
    {
        return static_cast<std::uint32_t>(c - WTEXT('A')) + 10;
    }
    return 16;
}

std::optional<std::uint32_t> NumberOf(WStringView text)
{
    std::uint32_t base = 10;
    if (text.size() > 2 && SameWord(text.substr(0, 2), WTEXT("0x")))
    {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint64_t number = 0;
    for (const WCHAR c : text)
    {
        const std::uint32_t digit = DigitOf(c);
        number = number * base + digit;
        if (digit >= base || number > 0xFFFFFFFFU)
        {
            return std::nullopt;
        }
    }
    if (text.empty())
    {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(number);
}

std::optional<std::vector<std::uint8_t>> BytesOf(WStringView text)
{
    if (text.size() % 2 != 0)
    {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size(); i += 2)
    {
        const std::uint32_t high = DigitOf(text[i]);
        const std::uint32_t low = DigitOf(text[i + 1]);
        if (high > 15 || low > 15)
        {
            return std::nullopt;
        }
        bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
    }
    return bytes;
}

/// Turns each "\0" of a multi text into a zero.
WString ZerosOf(WStringView text)
{
    WString zeros;
    for (std::size_t i = 0; i < text.size(); i++)
    {
        if (text.substr(i, 2) == WTEXT("\\0"))
        {
            zeros.push_back(WTEXT('\0'));
            i++;
        }
        else
        {
            zeros.push_back(text[i]);
        }
    }
    return zeros;
}

/// One pass over a script. The first error stays, and every step after it fails.
class CScriptReader
{
public:
    CScriptReader(WStringView script, const ScriptReplacements& replacements)
        : m_script(script), m_replacements(replacements)
    {
        Advance();
    }

    std::optional<ScriptError> Read(std::vector<ScriptTree>& trees)
    {
        while (!m_error && m_token)
        {
            const std::optional<ScriptRoot> root = RootOf(m_token->text);
            if (!root || m_token->quoted)
            {
                Fail("unknown root key");
                break;
            }
            Advance();
            ScriptTree tree{*root, {}};
            if (!IsPunctuation(WTEXT("{")))
            {
                Fail("a block must follow the root key");
            }
            else if (ReadBlock(tree.keys, nullptr, 1))
            {
                trees.push_back(std::move(tree));
            }
        }
        return m_error;
    }

private:
    void Fail(const char* reason) { Fail(reason, m_line); }

    void Fail(const char* reason, std::size_t line)
    {
        if (!m_error)
        {
            m_error = ScriptError{line, reason};
        }
        m_token.reset();
    }

    [[nodiscard]] bool IsWord(WStringView word) const
    {
        return m_token && !m_token->quoted && SameWord(m_token->text, word);
    }

    [[nodiscard]] bool IsPunctuation(WStringView mark) const
    {
        return m_token && !m_token->quoted && m_token->text == mark;
    }

    void Advance()
    {
        m_token.reset();
        while (m_at < m_script.size() && IsBlank(m_script[m_at]))
        {
            m_line += m_script[m_at] == WTEXT('\n') ? 1U : 0U;
            m_at++;
        }
        if (m_at >= m_script.size())
        {
            return;
        }
        if (m_script[m_at] == WTEXT('\''))
        {
            ReadQuoted();
            return;
        }
        const std::size_t start = m_at;
        while (m_at < m_script.size() && !IsBlank(m_script[m_at]))
        {
            m_at++;
        }
        m_token = Token{WString(m_script.substr(start, m_at - start)), false};
    }

    void ReadQuoted()
    {
        Token token{{}, true};
        for (m_at++; m_at < m_script.size(); m_at++)
        {
            if (m_script[m_at] == WTEXT('\''))
            {
                m_at++;
                if (m_at >= m_script.size() || m_script[m_at] != WTEXT('\''))
                {
                    m_token = std::move(token);
                    return;
                }
            }
            token.text.push_back(m_script[m_at]);
        }
        Fail("a quoted text does not end");
    }

    /// Takes the token as a name or datum, with its replacements made.
    bool Take(WString& text)
    {
        if (!m_token)
        {
            Fail("the script ends too early");
            return false;
        }
        WStringView rest = m_token->text;
        text.clear();
        for (std::size_t mark = rest.find(WTEXT('%')); mark != WStringView::npos;
             mark = rest.find(WTEXT('%')))
        {
            text.append(rest.substr(0, mark));
            const std::size_t end = rest.find(WTEXT('%'), mark + 1);
            if (end == WStringView::npos)
            {
                Fail("a replacement does not end");
                return false;
            }
            const WString name(rest.substr(mark + 1, end - mark - 1));
            const auto found = m_replacements.find(name);
            if (!name.empty() && found == m_replacements.end())
            {
                Fail("unknown replacement");
                return false;
            }
            text.append(name.empty() ? WTEXT("%") : found->second);
            rest.remove_prefix(end + 1);
        }
        text.append(rest);
        Advance();
        return !m_error;
    }

    bool ReadData(ScriptValue& value)
    {
        const std::size_t line = m_line; // what fails below is told by the line of the kind
        if (!m_token || m_token->quoted || m_token->text.size() != 1)
        {
            Fail("unknown kind of value");
            return false;
        }
        const WString kind = m_token->text;
        Advance();
        WString text;
        if (!Take(text))
        {
            return false;
        }
        if (SameWord(kind, WTEXT("s")) || SameWord(kind, WTEXT("e")))
        {
            value.kind =
                SameWord(kind, WTEXT("s")) ? ScriptValueKind::Text : ScriptValueKind::ExpandText;
            value.text = std::move(text);
            return true;
        }
        if (SameWord(kind, WTEXT("m")))
        {
            value.kind = ScriptValueKind::MultiText;
            value.text = ZerosOf(text);
            return true;
        }
        if (SameWord(kind, WTEXT("d")))
        {
            const std::optional<std::uint32_t> number = NumberOf(text);
            value.kind = ScriptValueKind::Number;
            value.number = number.value_or(0);
            return number || (Fail("not a 32-bit number", line), false);
        }
        if (SameWord(kind, WTEXT("b")))
        {
            std::optional<std::vector<std::uint8_t>> bytes = BytesOf(text);
            value.kind = ScriptValueKind::Bytes;
            value.bytes = bytes.value_or(std::vector<std::uint8_t>());
            return bytes || (Fail("not bytes in hexadecimal", line), false);
        }
        Fail("unknown kind of value", line);
        return false;
    }

    bool ReadValue(std::vector<ScriptValue>& values)
    {
        Advance(); // over "val"
        ScriptValue value;
        if (!Take(value.name))
        {
            return false;
        }
        if (!IsPunctuation(WTEXT("=")))
        {
            Fail("a value needs \"=\"");
            return false;
        }
        Advance();
        if (!ReadData(value))
        {
            return false;
        }
        values.push_back(std::move(value));
        return true;
    }

    bool ReadKey(std::vector<ScriptKey>& keys, std::size_t depth)
    {
        ScriptKey key;
        for (bool more = true; more;)
        {
            more = IsWord(WTEXT("ForceRemove")) || IsWord(WTEXT("NoRemove")) ||
                   IsWord(WTEXT("Delete"));
            key.forceRemove = key.forceRemove || IsWord(WTEXT("ForceRemove"));
            key.noRemove = key.noRemove || IsWord(WTEXT("NoRemove"));
            key.deleteOnly = key.deleteOnly || IsWord(WTEXT("Delete"));
            if (more)
            {
                Advance();
            }
        }
        if (IsPunctuation(WTEXT("{")) || IsPunctuation(WTEXT("}")) || IsPunctuation(WTEXT("=")))
        {
            Fail("a key needs a name");
            return false;
        }
        if (!Take(key.name))
        {
            return false;
        }
        if (key.name.empty())
        {
            // An empty name means the key above it: ForceRemove would then empty a shared key.
            Fail("a key needs a name");
            return false;
        }
        if (IsPunctuation(WTEXT("=")))
        {
            Advance();
            ScriptValue value;
            if (!ReadData(value))
            {
                return false;
            }
            key.values.push_back(std::move(value));
        }
        if (IsPunctuation(WTEXT("{")) && !ReadBlock(key.keys, &key.values, depth + 1))
        {
            return false;
        }
        keys.push_back(std::move(key));
        return !m_error;
    }

    /// Reads from "{" to behind its "}". Below a root key there are no values.
    bool ReadBlock(std::vector<ScriptKey>& keys,
                   std::vector<ScriptValue>* values,
                   std::size_t depth)
    {
        if (depth > kMaxDepth)
        {
            Fail("keys are nested too deep");
            return false;
        }
        Advance();
        while (m_token && !IsPunctuation(WTEXT("}")))
        {
            if (values != nullptr && IsWord(WTEXT("val")))
            {
                if (!ReadValue(*values))
                {
                    return false;
                }
            }
            else if (!ReadKey(keys, depth))
            {
                return false;
            }
        }
        if (!m_token)
        {
            Fail("a block does not end");
            return false;
        }
        Advance();
        return !m_error;
    }

    WStringView m_script;
    const ScriptReplacements& m_replacements;
    std::size_t m_at = 0;
    std::size_t m_line = 1;
    std::optional<Token> m_token;
    std::optional<ScriptError> m_error;
};

} // namespace

std::optional<ScriptError> ParseRegistrarScript(WStringView script,
                                                const ScriptReplacements& replacements,
                                                std::vector<ScriptTree>& trees)
{
    return CScriptReader(script, replacements).Read(trees);
}
