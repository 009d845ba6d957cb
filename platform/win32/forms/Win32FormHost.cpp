#include "platform/win32/forms/Win32FormHost.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

#include "platform/win32/Text.h"
#include "platform/win32/forms/Scale.h"

namespace orvanto::win32 {

// Of a form that has not been shown yet there is no window: many never are.
class Win32FormHost::Peer : public forms::FormPeer {
 public:
  Peer(Win32FormHost& host, forms::Form& form) : host_(host), form_(form) {}

  void Make() {
    window_ = &host_.MakeWindow(form_);
    window_->FormChanged(forms::FormProperty::Focus);
  }
  const forms::Form& GetForm() const { return form_; }

  void FormChanged(forms::FormProperty property) override {
    if (window_ == nullptr && form_.Visible()) Make();
    if (window_ == nullptr) return;
    if (property == forms::FormProperty::Visible) host_.ChooseTaskbar(window_->Get());
    window_->FormChanged(property);
  }
  void ControlChanged(const forms::Control& control, forms::Property property) override {
    if (window_ != nullptr) window_->ControlChanged(control, property);
  }
  void MenuChanged(const forms::MenuItem& item) override {
    if (window_ != nullptr) window_->MenuChanged(item);
  }
  bool HasKeyboard() const override {
    return window_ != nullptr && GetForegroundWindow() == window_->Get();
  }
  void Detach() {
    if (window_ != nullptr) window_->Detach();
  }
  forms::Bounds Place() const override {
    if (window_ != nullptr) return window_->Place();
    return {form_.Left(), form_.Top(), form_.ClientSize().width, form_.ClientSize().height};
  }

 private:
  Win32FormHost& host_;
  forms::Form& form_;
  FormWindow* window_ = nullptr;
};

Win32FormHost::Win32FormHost(Win32Loop& loop) : loop_(loop) {
  const INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_STANDARD_CLASSES |
                                                            ICC_TREEVIEW_CLASSES |
                                                            ICC_UPDOWN_CLASS | ICC_TAB_CLASSES};
  InitCommonControlsEx(&classes);
  loop_.preTranslate = [this](MSG& message) { return Navigate(message); };
}

Win32FormHost::~Win32FormHost() {
  loop_.preTranslate = nullptr;
  for (auto& window : std::exchange(windows_, {})) window.reset();
}

std::unique_ptr<forms::FormPeer> Win32FormHost::Attach(forms::Form& form) {
  if (main_ == nullptr) main_ = &form;
  return std::make_unique<Peer>(*this, form);
}

FormWindow& Win32FormHost::MakeWindow(forms::Form& form) {
  const HWND owner = &form != main_ ? owner_.Get() : nullptr;
  windows_.push_back(
      std::make_unique<FormWindow>(form, owner, [this](FormWindow& gone) { Forget(gone); }));
  if (&form == main_) mainWindow_ = windows_.back()->Get();
  return *windows_.back();
}

void Win32FormHost::Detach(std::unique_ptr<forms::FormPeer> peer) {
  auto& own = static_cast<Peer&>(*peer);
  if (&own.GetForm() == main_) main_ = nullptr;
  own.Detach();
}

void Win32FormHost::Forget(const FormWindow& window) {
  const auto found = std::find_if(windows_.begin(), windows_.end(),
                                  [&](const auto& each) { return each.get() == &window; });
  if (found == windows_.end()) return;
  if ((*found)->Get() == mainWindow_) mainWindow_ = nullptr;
  windows_.erase(found);
}

// To be called while the window is hidden; the task bar looks at it when it is shown.
void Win32FormHost::ChooseTaskbar(HWND window) const {
  if (window == mainWindow_ || IsWindowVisible(window)) return;
  const LONG_PTR style = GetWindowLongPtrW(window, GWL_EXSTYLE);
  const LONG_PTR other = IsWindowVisible(mainWindow_) ? style & ~LONG_PTR{WS_EX_APPWINDOW}
                                                      : style | LONG_PTR{WS_EX_APPWINDOW};
  if (other != style) SetWindowLongPtrW(window, GWL_EXSTYLE, other);
}

HWND Win32FormHost::ActiveForm() const {
  const std::vector<HWND> forms = VisibleForms();
  const auto found = std::find(forms.begin(), forms.end(), GetActiveWindow());
  return found != forms.end() ? *found : nullptr;
}

std::vector<HWND> Win32FormHost::VisibleForms() const {
  std::vector<HWND> visible;
  for (const auto& window : windows_) {
    if (IsWindowVisible(window->Get())) visible.push_back(window->Get());
  }
  return visible;
}

forms::Size Win32FormHost::ScreenSize() const {
  const RECT area = MainWorkArea();
  const UINT dpi = MainScreenDpi();
  return {ToTwips(area.right - area.left, dpi), ToTwips(area.bottom - area.top, dpi)};
}

forms::Size Win32FormHost::FrameSize(const forms::Form& form) const {
  const UINT dpi = MainScreenDpi();
  const SIZE outer = OuterSize(form, form.ClientSize(), dpi);
  return {ToTwips(outer.cx, dpi) - form.ClientSize().width,
          ToTwips(outer.cy, dpi) - form.ClientSize().height};
}

forms::Size Win32FormHost::TextSize(const std::string& text, int width) const {
  const UINT dpi = MainScreenDpi();
  const Handle<HFONT, DeleteObject> font = MessageFont(dpi);
  const Handle<HDC, DeleteDC> context(CreateCompatibleDC(nullptr));
  const HGDIOBJ old = SelectObject(context.Get(), font.Get());
  const std::wstring shown = ToWide(text);
  RECT place = {0, 0, ToPixels(width, dpi), 0};
  DrawTextW(context.Get(), shown.c_str(), static_cast<int>(shown.size()), &place,
            DT_CALCRECT | DT_WORDBREAK | DT_EDITCONTROL | DT_EXPANDTABS | DT_NOPREFIX);
  SelectObject(context.Get(), old);
  // A pixel more, for what is lost in rounding.
  return {ToTwips(place.right + 1, dpi), ToTwips(place.bottom + 1, dpi)};
}

// Tab, arrows, mnemonics, Enter and Esc. The forms have no accelerators; they would go first.
// A mnemonic wants Alt: a bare letter, typed for another window or in the belief that the keyboard
// is in a text, must not delete a task, end a chat or close a message unread.
bool Win32FormHost::Navigate(MSG& message) const {
  if (message.hwnd == nullptr || message.message == WM_CHAR) return false;
  const HWND root = GetAncestor(message.hwnd, GA_ROOT);
  const bool ours = std::any_of(windows_.begin(), windows_.end(),
                                [&](const auto& each) { return each->Get() == root; });
  return ours && IsDialogMessageW(root, &message);
}

}  // namespace orvanto::win32
