// The exception of the document layer.
#pragma once

#include "tarn/export.hpp"

#include <stdexcept>

namespace tarn::document {

/// A call was refused because it would have made a document that is not well-formed, or a stream
/// has failed. what() is UTF-8 unless a name in it is not, and names the place first: the path of
/// element names from the root, `feed/entry/@id`, or `/` outside the root; then `: ` and what is
/// wrong.
///
/// @see @ref what-is-refused
class TARN_EXPORT Error : public std::runtime_error
{
public:
    using runtime_error::runtime_error;
    /// Defined in the library, so that every program has the same type.
    ~Error() override;
};

} // namespace tarn::document
