// Stands in for the library's own handler of what nobody catches. That one writes the type's name
// to an error output, which a desktop program has not, and brings a reader of mangled names along.
#include <cstdlib>

namespace __gnu_cxx {

[[noreturn]] void __verbose_terminate_handler();
void __verbose_terminate_handler() { std::abort(); }

}  // namespace __gnu_cxx
