#pragma once

#include "base/bytes.h"
#include "base/result.h"
#include "texts/catalogue.h"

#include <memory>

namespace quobrix {

/// Larger files are no translations. Bytes.
inline constexpr std::uint64_t kMaxTranslation = 16 * 1024 * 1024;

/// The translation in BYTES, a file as msgfmt makes it (GNU gettext's MO, little-endian, UTF-8). A text whose
/// translation has not the places of the English one (as {} or %1) is left out, so that it stays English.
/// NotADocument if it is no such file, Corrupt if it is damaged, Unsupported if it is not in UTF-8 or its plurals are
/// no rule.
Result<std::shared_ptr<const Catalogue>> readTranslation(ByteView bytes);

} // namespace quobrix
