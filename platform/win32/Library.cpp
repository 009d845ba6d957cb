#include "platform/win32/Library.h"

#include <windows.h>

#include <system_error>

namespace orvanto::win32 {

void* FunctionOf(const wchar_t* library, const char* name) {
  const HMODULE module = LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  const FARPROC function = module != nullptr ? GetProcAddress(module, name) : nullptr;
  if (function == nullptr) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), name);
  }
  return reinterpret_cast<void*>(function);
}

}  // namespace orvanto::win32
