// The end of a throw in WebAssembly, which has no exceptions here: the browser stops the code with
// an error of its own, and the page says that it cannot read the text.

#include <cstddef>
#include <cstdlib>

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): the names that the compiler calls.
void* __cxa_allocate_exception(std::size_t /*size*/) { std::abort(); }

void __cxa_throw(void* /*exception*/, void* /*type*/, void (* /*destroy*/)(void*)) { std::abort(); }
// NOLINTEND(bugprone-reserved-identifier)

}  // extern "C"
