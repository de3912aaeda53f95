// Decimal formatting of unsigned integers as UTF-16 text.
#pragma once

#include "tarn/export.hpp"

#include <string>

/// The XML writer and general helpers.
namespace tarn::utils {

/// Formats @p value in base ten.
///
/// The result has no sign, leading zeros, grouping or padding: only ASCII digits, one UTF-16 code
/// unit each, at most 20 of them. Locales play no part. Reentrant.
///
/// @throws std::bad_alloc when the result cannot be allocated.
TARN_EXPORT std::u16string num_to_string(unsigned long value);

} // namespace tarn::utils
