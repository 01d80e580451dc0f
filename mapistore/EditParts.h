#pragma once

#include "PropertyWriter.h"
#include "TextEdit.h"

/// What the changes of messages and of folders have in common.
namespace mapistore
{

[[noreturn]] void ThrowGone();

Json ParsePart(std::string_view text, const TextRange& range);
std::string Dump(const Json& json);

/// Where an object stands, moved in as far as its first line is.
std::string InPlace(std::string_view text, const TextRange& range, const Json& json);

} // namespace mapistore
