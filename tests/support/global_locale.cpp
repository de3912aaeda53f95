// Loaded before a program, makes the locale of the environment the program's own, as any program
// that uses the libraries may do.

#include <locale>

namespace {

// An exception ends a program whose environment names a locale that does not exist.
const std::locale FORMER = std::locale::global(std::locale(""));

} // namespace
