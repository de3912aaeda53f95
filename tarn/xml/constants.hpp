// The strings that stay the same in every document and are passed as a `std::u16string`.
#pragma once

#include <string>

namespace tarn::utils {

namespace detail {

/// No namespace, no prefix.
extern const std::u16string NONE;

} // namespace detail

/// The two prefixes that Namespaces in XML 1.0 reserves, and the namespace names that it ties to
/// them.
extern const std::u16string XML_PREFIX;
extern const std::u16string XMLNS_PREFIX;
extern const std::u16string XML_NAMESPACE;
extern const std::u16string XMLNS_NAMESPACE;

} // namespace tarn::utils
