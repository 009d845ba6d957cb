#include "platform/win32/Com.h"

#include <windows.h>

#include <objbase.h>

#include "platform/win32/Library.h"

namespace orvanto::win32 {

void Com::Begin() {
  if (begun_) return;
  const auto begin = Late<decltype(CoInitializeEx)>(L"ole32.dll", "CoInitializeEx");
  begun_ = SUCCEEDED(begin(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE));
}

Com::~Com() {
  if (begun_) Late<decltype(CoUninitialize)>(L"ole32.dll", "CoUninitialize")();
}

}  // namespace orvanto::win32
