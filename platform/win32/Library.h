// Functions of those of the system's libraries that few runs need: a start waits for none of them.
#pragma once

namespace orvanto::win32 {

// Loads the library, from the system only, where that has not been done; it stays loaded. Throws
// std::system_error where there is no such function. What is returned is never null.
void* FunctionOf(const wchar_t* library, const char* name);

// To be called as `Late<decltype(F)>(library, "F")(arguments)`.
template <typename Function>
Function* Late(const wchar_t* library, const char* name) {
  return reinterpret_cast<Function*>(FunctionOf(library, name));
}

}  // namespace orvanto::win32
