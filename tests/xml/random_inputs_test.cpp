// Random bytes as calls and as documents.

#include "support/random_inputs.hpp"
#include "support/written_calls.hpp"
#include "support/written_document.hpp"

#include <gtest/gtest.h>

namespace tarn::tests {

namespace {

TEST(RandomInputs, GiveTheTextAndThePiecesOfTheReferenceWriter)
{
    forRandomInputs(IS_SANITIZED ? 1000 : 5000, 4000, [](Input input) {
        Calls calls;
        EXPECT_EQ(faultOfCalls(input, calls), "");
    });
}

TEST(RandomInputs, GiveDocumentsThatSayWhatWentIn)
{
    forRandomInputs(500, 4000, [](Input input) { EXPECT_EQ(faultOfDocument(input), ""); });
}

} // namespace

} // namespace tarn::tests
