#include "tarn/document/Text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string_view>

namespace tarn::document {

namespace {

/// @return how many characters of @p text were written.
template <class Number>
std::size_t writeNumber(Number value, char (&text)[48])
{
    return static_cast<std::size_t>(std::to_chars(std::begin(text), std::end(text), value).ptr -
                                    text);
}

template <class Number>
std::size_t writeFloat(Number value, char (&text)[48])
{
    if (!std::isfinite(value)) {
        const std::string_view name = std::isnan(value) ? "NaN" : value > 0 ? "INF" : "-INF";
        return static_cast<std::size_t>(std::ranges::copy(name, text).out - text);
    }
    return writeNumber(value, text);
}

} // namespace

void Text::setBool(bool value)
{
    const std::string_view name = value ? "true" : "false";
    setOwn(static_cast<std::size_t>(std::ranges::copy(name, own).out - own));
}

void Text::setInteger(long long value)
{
    setOwn(writeNumber(value, own));
}

void Text::setInteger(unsigned long long value)
{
    setOwn(writeNumber(value, own));
}

void Text::setFloat(float value)
{
    setOwn(writeFloat(value, own));
}

void Text::setFloat(double value)
{
    setOwn(writeFloat(value, own));
}

void Text::setFloat(long double value)
{
    setOwn(writeFloat(value, own));
}

void Text::setTime(long long seconds, long long nanoseconds)
{
    using namespace std::chrono;
    // The calendar repeats after 400 years, and its classes know 65,536 years only.
    constexpr long long SECONDS_OF_400_YEARS = 146'097LL * 86'400;
    const sys_seconds near1970{std::chrono::seconds(seconds % SECONDS_OF_400_YEARS)};
    const sys_days day = floor<days>(near1970);
    const year_month_day date{day};
    const hh_mm_ss time(near1970 - day);
    const long long year = static_cast<int>(date.year()) + 400 * (seconds / SECONDS_OF_400_YEARS);
    // There is a year 0 in XML Schema 1.1.
    int length = std::snprintf(
        own, sizeof own, "%s%04lld-%02u-%02uT%02d:%02d:%02d", year < 0 ? "-" : "", std::abs(year),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()));
    if (nanoseconds != 0) {
        length += std::snprintf(own + length, sizeof own - static_cast<std::size_t>(length),
                                ".%09lld", nanoseconds);
        while (own[length - 1] == '0') {
            --length;
        }
    }
    own[length++] = 'Z';
    setOwn(static_cast<std::size_t>(length));
}

} // namespace tarn::document
