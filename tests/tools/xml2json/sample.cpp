#include "tools/common/Sample.hpp"

namespace tarn::tools::test {

const Sample SAMPLE{
    .input = R"(<number xmlns="http://www.w3.org/2005/xpath-functions">1</number>)",
    .result = "1\n",
    .stringStart = R"(<string xmlns="http://www.w3.org/2005/xpath-functions">)",
    .stringEnd = "</string>",
    .arrayStart = R"(<array xmlns="http://www.w3.org/2005/xpath-functions">)",
    .arrayEnd = "</array>",
};

} // namespace tarn::tools::test
