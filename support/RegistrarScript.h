#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "PlatformTypes.h"

/// Registrar scripts, as they stand in the REGISTRY resources of COM servers, turned into trees.
///
/// Shape:  script   = { root "{" { key } "}" }
///         root     = "HKCR" | "HKCU" | "HKLM" | "HKU" | "HKCC", or the long name of one of them
///         key      = { modifier } name [ "=" kind data ] [ "{" { key | value } "}" ]
///         modifier = "ForceRemove" | "NoRemove" | "Delete"
///         value    = "val" name "=" kind data
///         kind     = "s" text | "e" text with environment names | "m" texts, each ended by "\0"
///                  | "d" number, decimal or behind 0x | "b" bytes in hexadecimal
///         A name or datum is a run of characters up to a blank, or stands between apostrophes,
///         where
///         '' is one apostrophe. Keywords know no case. %NAME% in a name or datum is replaced, and
///         %% is one percent sign.

/// Type of a registry value that a script writes.
enum class ScriptValueKind
{
    Text,
    ExpandText,
    MultiText,
    Number,
    Bytes,
};

struct ScriptValue
{
    WString name; ///< empty for the default value of a key
    ScriptValueKind kind = ScriptValueKind::Text;
    WString text; ///< of the three text kinds; MultiText holds its zeros, the last one excepted
    std::uint32_t number = 0;
    std::vector<std::uint8_t> bytes;
};

struct ScriptKey
{
    WString name;
    bool forceRemove = false; ///< emptied before it is written, removed with all below it
    bool noRemove = false;    ///< shared with others: stays when the script is undone
    bool deleteOnly = false;  ///< removed when the script is run, and nothing else
    std::vector<ScriptValue> values;
    std::vector<ScriptKey> keys;
};

/// Which predefined key a tree hangs below.
enum class ScriptRoot
{
    ClassesRoot,
    CurrentUser,
    LocalMachine,
    Users,
    CurrentConfig,
};

struct ScriptTree
{
    ScriptRoot root = ScriptRoot::ClassesRoot;
    std::vector<ScriptKey> keys;
};

/// Texts for %NAME%, by exact name.
using ScriptReplacements = std::map<WString, WString>;

/// Where and why a script is refused.
struct ScriptError
{
    std::size_t line = 0; ///< from 1
    const char* reason = "";
};

/// Reads a script. Nothing in `trees` counts when an error is answered.
/// Errors: an unknown root, keyword, kind or replacement, a text or block that does not end, a
/// number
///         that is none, and nesting deeper than 32 keys.
std::optional<ScriptError> ParseRegistrarScript(WStringView script,
                                                const ScriptReplacements& replacements,
                                                std::vector<ScriptTree>& trees);
