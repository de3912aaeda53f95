#include "tarn/utils/num_to_string.hpp"

#include <iterator>
#include <limits>

namespace tarn::utils {

std::u16string num_to_string(unsigned long value)
{
    constexpr int MOST_DIGITS = std::numeric_limits<unsigned long>::digits10 + 1;
    char16_t digits[MOST_DIGITS];
    char16_t* first = std::end(digits);
    do {
        *--first = static_cast<char16_t>(u'0' + value % 10);
        value /= 10;
    } while (value != 0);
    return {first, std::end(digits)};
}

} // namespace tarn::utils
