// The exception of the document layer.
#pragma once

#include "tarn/export.hpp"

#include <stdexcept>

namespace tarn::document {

/// A call that would have made a document that is not well-formed. what() names the place first:
/// the path of element names from the root, `feed/entry/@id`, then `: ` and what is wrong.
class TARN_EXPORT Error : public std::runtime_error
{
public:
    using runtime_error::runtime_error;
    ~Error() override;
};

} // namespace tarn::document
