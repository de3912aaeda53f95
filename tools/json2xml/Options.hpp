// Options: what the command line asks for.
#pragma once

#include "tools/common/FileOptions.hpp"
#include "tools/json2xml/limits.hpp"
#include "tools/json2xml/XmlHandler.hpp"

namespace json2xml {

struct Options
{
    tarn::tools::FileOptions files;
    Limits limits;
    Format format;
};

/// Throws a tarn::tools::UsageError for what it does not understand.
Options parseOptions(int argumentCount, const char* const* arguments);

} // namespace json2xml
