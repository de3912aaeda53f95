// Options: what the command line asks for.
#pragma once

#include "tools/common/FileOptions.hpp"
#include "tools/xml2json/JsonHandler.hpp"
#include "tools/xml2json/limits.hpp"

namespace xml2json {

struct Options
{
    tarn::tools::FileOptions files;
    Limits limits;
    Format format;
};

/// Throws a tarn::tools::UsageError for what it does not understand.
Options parseOptions(int argumentCount, const char* const* arguments);

} // namespace xml2json
