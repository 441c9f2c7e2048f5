#pragma once

#include <string>
#include <string_view>

namespace quobrix {

/// TEXT for the content or a quoted attribute of XML and HTML: what has a meaning there is escaped, and what must not
/// stand there at all (broken UTF-8, control characters but line breaks, U+FFFE and U+FFFF) is taken out.
std::string escapeMarkup(std::string_view text);

} // namespace quobrix
