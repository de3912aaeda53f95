#include "tools/common/Sample.hpp"

namespace tarn::tools::test {

const Sample SAMPLE{
    .input = "1",
    .result = R"(<?xml version="1.0" encoding="UTF-8"?>
<number xmlns="http://www.w3.org/2005/xpath-functions">1</number>
)",
    .stringStart = "\"",
    .stringEnd = "\"",
    .arrayStart = "[",
    .arrayEnd = "]",
};

} // namespace tarn::tools::test
