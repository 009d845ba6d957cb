#include "platform/win32/SingleInstance.h"

namespace orvanto::win32 {

namespace {

constexpr const wchar_t* kMutex = L"Local\\Quellmark.Orvanto";
constexpr const wchar_t* kWindowClass = L"OrvantoInstance";
constexpr int kTries = 200;
constexpr DWORD kBetweenTries = 25;  // milliseconds

bool IsTaken(DWORD wait) { return wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED; }

}  // namespace

SingleInstance::SingleInstance()
    : message_(RegisterWindowMessageW(L"Quellmark.Orvanto.Show")),
      mutex_(CreateMutexW(nullptr, FALSE, kMutex)) {
  // The mutex belongs to the first before its window is there, and until after that has gone.
  for (int i = 0; i < kTries; ++i) {
    if (mutex_ && IsTaken(WaitForSingleObject(mutex_.Get(), 0))) {
      window_ = std::make_unique<HiddenWindow>(
          kWindowClass, [this](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message != message_) return std::nullopt;
            if (onShow) onShow();
            return 0;
          });
      // Also from a second start with fewer rights.
      ChangeWindowMessageFilterEx(window_->Get(), message_, MSGFLT_ALLOW, nullptr);
      return;
    }
    first_ = FindWindowW(kWindowClass, nullptr);
    if (first_ != nullptr) return;
    Sleep(kBetweenTries);
  }
}

SingleInstance::~SingleInstance() {
  const bool wasFirst = IsFirst();
  window_.reset();
  if (wasFirst) ReleaseMutex(mutex_.Get());
}

void SingleInstance::ShowFirst() const {
  if (first_ == nullptr) return;
  // Only whom the user has just started may take the foreground, or hand it on.
  DWORD process = 0;
  GetWindowThreadProcessId(first_, &process);
  AllowSetForegroundWindow(process);
  PostMessageW(first_, message_, 0, 0);
}

}  // namespace orvanto::win32
