#include "platform/win32/forms/FormWindow.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "platform/win32/HiddenWindow.h"
#include "platform/win32/Text.h"
#include "platform/win32/forms/Scale.h"
#include "platform/win32/forms/TitleBar.h"

namespace orvanto::win32 {

using forms::FormProperty;
using forms::Property;

namespace {

constexpr const wchar_t* kWindowClass = L"OrvantoForm";
constexpr UINT kDestroy = WM_APP;
constexpr UINT kFirstControl = 100;  // above IDOK and IDCANCEL

// Counts up as long as the scope lasts.
class Scope {
 public:
  explicit Scope(int& count) : count_(count) { ++count_; }
  ~Scope() { --count_; }
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

 private:
  int& count_;
};

void SetStyle(HWND window, DWORD style, bool on) {
  const LONG_PTR old = GetWindowLongPtrW(window, GWL_STYLE);
  SetWindowLongPtrW(window, GWL_STYLE, on ? old | LONG_PTR{style} : old & ~LONG_PTR{style});
}

void RegisterFormClass(WNDPROC procedure) {
  WNDCLASSEXW windowClass = {};
  windowClass.cbSize = sizeof windowClass;
  if (GetClassInfoExW(ThisModule(), kWindowClass, &windowClass)) return;
  windowClass.hInstance = ThisModule();
  windowClass.lpszClassName = kWindowClass;
  windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // IDC_ARROW
  windowClass.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  windowClass.lpfnWndProc = procedure;
  RegisterClassExW(&windowClass);
}

}  // namespace

Handle<HFONT, DeleteObject> MessageFont(UINT dpi) {
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi);
  return Handle<HFONT, DeleteObject>(CreateFontIndirectW(&metrics.lfMessageFont));
}

FormWindow::FormWindow(forms::Form& form, HWND owner, std::function<void(FormWindow&)> gone)
    : form_(&form), gone_(std::move(gone)) {
  const Scope mirroring(mirroring_);
  MakeWindow(owner);
  MakeControls();
  Rescale();
  FormChanged(FormProperty::Size);
  if (form.Placed()) MoveToPosition();
  if (form.TopMost()) FormChanged(FormProperty::TopMost);
}

FormWindow::~FormWindow() {
  form_ = nullptr;
  gone_ = nullptr;
  controls_.clear();
  if (window_ != nullptr) DestroyWindow(window_);
}

void FormWindow::MakeWindow(HWND owner) {
  RegisterFormClass(Procedure);
  const POINT corner = form_->Placed() ? Corner() : POINT{CW_USEDEFAULT, CW_USEDEFAULT};
  const SIZE size = OuterSize(*form_, form_->ClientSize(), MainScreenDpi());
  window_ = CreateWindowExW(ExtendedStyleOf(*form_), kWindowClass, ToWide(form_->Caption()).c_str(),
                            StyleOf(*form_), corner.x, corner.y, size.cx, size.cy, owner,
                            menu_.Make(form_->MenuBar()), ThisModule(), nullptr);
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  dpi_ = GetDpiForWindow(window_);
  ColourTitleBar(window_);
  // As a dialog does: mnemonics are underlined once the keyboard is used.
  SendMessageW(window_, WM_CHANGEUISTATE, MAKEWPARAM(UIS_INITIALIZE, 0), 0);
}

void FormWindow::MakeControls() {
  bool afterOption = false;
  const forms::Control* container = nullptr;
  for (forms::Control* control : form_->Controls()) {
    // A screen reader takes the text before a control for its name, seen or not.
    if (!control->spokenName.empty()) {
      CreateWindowExW(0, WC_STATICW, ToWide(control->spokenName).c_str(), WS_CHILD, 0, 0, 0, 0,
                      window_, nullptr, ThisModule(), nullptr);
    }
    const bool isOption = control->AsOption() != nullptr;
    controls_.push_back(
        MakeControlWindow(*control, window_, static_cast<int>(kFirstControl + controls_.size())));
    if (!control->spokenName.empty() && controls_.back()->WantsTip()) {
      tips_.Add(window_, controls_.back()->Get(), ToWide(control->spokenName));
    }
    // The arrow keys walk through the options of one container.
    const bool among = afterOption && isOption && container == control->Container();
    if ((isOption || afterOption) && !among) SetStyle(controls_.back()->Get(), WS_GROUP, true);
    afterOption = isOption;
    container = control->Container();
  }
  MirrorOptionStops();
}

// Tab enters the options of one container at the chosen one, or at the first where none is.
void FormWindow::MirrorOptionStops() const {
  std::map<const forms::Control*, HWND> stops;
  std::vector<std::pair<HWND, const forms::Control*>> options;
  for (const auto& window : controls_) {
    const forms::OptionButton* option = window->GetControl().AsOption();
    if (option == nullptr) continue;
    options.emplace_back(window->Get(), option->Container());
    stops.try_emplace(option->Container(), window->Get());
    if (option->Value()) stops[option->Container()] = window->Get();
  }
  for (const auto& [window, container] : options) {
    SetStyle(window, WS_TABSTOP, stops[container] == window);
  }
}

void FormWindow::MenuChanged(const forms::MenuItem& item) {
  const HMENU menu = menu_.Changed(item);
  if (menu != nullptr && menu == GetMenu(window_) && IsWindowVisible(window_)) DrawMenuBar(window_);
}

// Font, images and places for the present resolution.
void FormWindow::Rescale() {
  const Scope mirroring(mirroring_);
  Handle<HFONT, DeleteObject> font = MessageFont(dpi_);
  for (const auto& window : controls_) {
    SendMessageW(window->Get(), WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), FALSE);
    Place(*window);
    window->Rescale(dpi_);
  }
  font_ = std::move(font);
  for (const auto& [size, kind] : {std::pair{SM_CXICON, ICON_BIG}, {SM_CXSMICON, ICON_SMALL}}) {
    const int side = GetSystemMetricsForDpi(size, dpi_);
    // Not shared: of those the system gives the first that was loaded, whatever its size.
    Icon icon(static_cast<HICON>(
        LoadImageW(ThisModule(), MAKEINTRESOURCEW(1), IMAGE_ICON, side, side, LR_DEFAULTCOLOR)));
    SendMessageW(window_, WM_SETICON, static_cast<WPARAM>(kind),
                 reinterpret_cast<LPARAM>(icon.Get()));
    icons_[kind] = std::move(icon);
  }
  InvalidateRect(window_, nullptr, TRUE);
}

void FormWindow::Place(ControlWindow& window) const {
  window.Place(PlaceOf(window.GetControl(), dpi_));
}

void FormWindow::MirrorState(const ControlWindow& window) {
  const DWORD state = StateOf(window.GetControl());
  const bool visible = (state & WS_VISIBLE) != 0;
  const bool enabled = (state & WS_DISABLED) == 0;
  // A keyboard that talks to a dead window is dead, too.
  const HWND focus = GetFocus();
  const bool focused = focus == window.Get() || IsChild(window.Get(), focus);
  if (!(visible && enabled) && focused) {
    MoveFocus(GetNextDlgTabItem(window_, window.Get(), FALSE));
  }
  ShowWindow(window.Get(), visible ? SW_SHOWNA : SW_HIDE);
  EnableWindow(window.Get(), enabled);
}

void FormWindow::ControlChanged(const forms::Control& control, Property property) {
  const Scope mirroring(mirroring_);
  const bool place = property == Property::Bounds;
  const bool state = property == Property::Visible || property == Property::Enabled;
  for (const auto& window : controls_) {
    const forms::Control* each = &window->GetControl();
    if (!place && !state) {
      if (each == &control) window->Mirror(property);
      continue;
    }
    // A frame's changes are those of all that stands in it.
    while (each != nullptr && each != &control) each = each->Container();
    if (each == nullptr) continue;
    if (place) Place(*window);
    if (state) MirrorState(*window);
  }
  if (property == Property::Value) MirrorOptionStops();
  if (place || state) InvalidateRect(window_, nullptr, TRUE);
}

void FormWindow::FormChanged(FormProperty property) {
  const Scope mirroring(mirroring_);
  switch (property) {
    case FormProperty::Caption:
      SetWindowTextW(window_, ToWide(form_->Caption()).c_str());
      break;
    case FormProperty::Position:
      MoveToPosition();
      break;
    case FormProperty::Size: {
      const SIZE size = OuterSize(*form_, form_->ClientSize(), dpi_);
      RECT place = {};
      GetWindowRect(window_, &place);
      if (place.right - place.left == size.cx && place.bottom - place.top == size.cy) break;
      SetWindowPos(window_, nullptr, 0, 0, size.cx, size.cy,
                   SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
      break;
    }
    case FormProperty::TopMost:
      // Where another form is in front, that one keeps the keyboard.
      SetWindowPos(window_, form_->TopMost() ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
                   SWP_NOMOVE | SWP_NOSIZE | (GetActiveWindow() == window_ ? 0 : SWP_NOACTIVATE));
      break;
    case FormProperty::Visible:
      if (form_->Visible()) {
        ShowWindow(window_, IsZoomed(window_) ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL);
        SetForegroundWindow(window_);
      } else {
        ShowWindow(window_, SW_HIDE);
      }
      break;
    case FormProperty::Active:
      if (IsIconic(window_)) ShowWindow(window_, SW_RESTORE);
      SetForegroundWindow(window_);
      break;
    case FormProperty::Focus:
      if (const ControlWindow* window = Find(form_->Focus())) MoveFocus(window->Get());
      break;
  }
}

void FormWindow::Detach() {
  const Scope mirroring(mirroring_);
  form_ = nullptr;
  controls_.clear();
  menu_.Clear();
  ShowWindow(window_, SW_HIDE);
  DestroyWhenIdle();
}

// Posted, because the child that reported something may still be at it when we have returned.
void FormWindow::DestroyWhenIdle() {
  if (form_ == nullptr && depth_ == 0) PostMessageW(window_, kDestroy, 0, 0);
}

LRESULT CALLBACK FormWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<FormWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcW(window, message, wParam, lParam);
  if (message == WM_NCDESTROY) {
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    self->window_ = nullptr;
    if (const auto gone = self->gone_) gone(*self);
    return DefWindowProcW(window, message, wParam, lParam);
  }
  if (message == kDestroy && self->form_ == nullptr) {
    if (self->depth_ == 0) DestroyWindow(window);
    return 0;
  }
  LRESULT result = 0;
  {
    const Scope depth(self->depth_);
    try {
      result = self->OnMessage(message, wParam, lParam);
    } catch (...) {
      ReportException("form");
    }
  }
  self->DestroyWhenIdle();
  return result;
}

LRESULT FormWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (form_ == nullptr) return DefWindowProcW(window_, message, wParam, lParam);
  switch (message) {
    case WM_CLOSE:
      form_->Close();
      return 0;
    case WM_HELP:
      form_->Help();
      return TRUE;
    case WM_COMMAND:
      OnCommand(LOWORD(wParam), HIWORD(wParam));
      return 0;
    case WM_NOTIFY:
      return OnNotify(*reinterpret_cast<const NMHDR*>(lParam));
    case WM_DRAWITEM: {
      const auto& draw = *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
      if (const ControlWindow* window = Find(draw.CtlID)) window->OnDraw(draw);
      return TRUE;
    }
    case WM_CTLCOLORSTATIC:
      return OnStaticColour(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam));
    case WM_ERASEBKGND: {
      const LRESULT erased = DefWindowProcW(window_, message, wParam, lParam);
      PaintGrounds(reinterpret_cast<HDC>(wParam));
      return erased;
    }
    case WM_ACTIVATE:
      OnActivate(LOWORD(wParam) != WA_INACTIVE);
      break;
    case WM_SETFOCUS:
      TakeFocus();
      return 0;
    case DM_GETDEFID:
      // Enter comes to this one as a command, as if it were a button that is pressed.
      if (const int focus = GetDlgCtrlID(GetFocus());
          const ControlWindow* window = Find(static_cast<UINT>(focus))) {
        if (window->TakesEnter()) return MAKELRESULT(focus, DC_HASDEFID);
      }
      if (const ControlWindow* window = Find(form_->defaultButton)) {
        return MAKELRESULT(GetDlgCtrlID(window->Get()), DC_HASDEFID);
      }
      return 0;
    default:
      return OnSystemChange(message, wParam, lParam);
  }
  return DefWindowProcW(window_, message, wParam, lParam);
}

LRESULT FormWindow::OnSystemChange(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_GETDPISCALEDSIZE:
      if (IsZoomed(window_)) break;
      *reinterpret_cast<SIZE*>(lParam) =
          OuterSize(*form_, form_->ClientSize(), static_cast<UINT>(wParam));
      return TRUE;
    case WM_GETMINMAXINFO: {
      if (!form_->resizable) break;
      const SIZE least = OuterSize(*form_, form_->LeastSize(), dpi_);
      reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {least.cx, least.cy};
      return 0;
    }
    case WM_SIZE:
      OnSize(wParam);
      return 0;
    case WM_DISPLAYCHANGE:
      KeepOnScreen();
      break;
    case WM_DPICHANGED: {
      dpi_ = HIWORD(wParam);
      const auto& place = *reinterpret_cast<const RECT*>(lParam);
      SetWindowPos(window_, nullptr, place.left, place.top, place.right - place.left,
                   place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
      Rescale();
      return 0;
    }
    case WM_SETTINGCHANGE:
      if (wParam == SPI_SETNONCLIENTMETRICS) Rescale();
      if (wParam == SPI_SETWORKAREA) KeepOnScreen();
      ColourTitleBar(window_);
      break;
    case WM_THEMECHANGED:
      Rescale();
      break;
    case WM_SYSCOLORCHANGE:
      // The common controls are told by nobody else.
      for (const auto& window : controls_) SendMessageW(window->Get(), message, wParam, lParam);
      Rescale();
      break;
    default:
      break;
  }
  // Not in a mirroring scope: this may be a whole menu or the moving of the window.
  return DefWindowProcW(window_, message, wParam, lParam);
}

LRESULT FormWindow::OnStaticColour(HDC context, HWND control) {
  const ControlWindow* window = Find(static_cast<UINT>(GetDlgCtrlID(control)));
  const bool isField = window != nullptr && window->IsField();
  const bool enabled = IsWindowEnabled(control) != 0;
  const int text = !enabled ? COLOR_GRAYTEXT : isField ? COLOR_WINDOWTEXT : COLOR_BTNTEXT;
  const HBRUSH background = isField && enabled             ? GetSysColorBrush(COLOR_WINDOW)
                            : isField || window == nullptr ? GetSysColorBrush(COLOR_BTNFACE)
                                                           : GroundOf(*window);
  LOGBRUSH brush = {};
  GetObjectW(background, sizeof brush, &brush);
  SetTextColor(context, GetSysColor(text));
  SetBkColor(context, brush.lbColor);
  return reinterpret_cast<LRESULT>(background);
}

HBRUSH FormWindow::GroundOf(const ControlWindow& window) const {
  const forms::Control* container = window.GetControl().Container();
  for (; container != nullptr; container = container->Container()) {
    if (const HBRUSH brush = Find(container)->GetGround().brush) return brush;
  }
  return GetSysColorBrush(COLOR_BTNFACE);
}

void FormWindow::PaintGrounds(HDC context) const {
  for (const auto& window : controls_) {
    const ControlWindow::Ground ground = window->GetGround();
    const bool shown = (GetWindowLongPtrW(window->Get(), GWL_STYLE) & WS_VISIBLE) != 0;
    if (shown && ground.brush != nullptr) FillRect(context, &ground.place, ground.brush);
  }
}

ControlWindow* FormWindow::Find(UINT id) const {
  if (id < kFirstControl || id - kFirstControl >= controls_.size()) return nullptr;
  return controls_[id - kFirstControl].get();
}

ControlWindow* FormWindow::Find(const forms::Control* control) const {
  const auto found = std::find_if(controls_.begin(), controls_.end(), [&](const auto& window) {
    return &window->GetControl() == control;
  });
  return found != controls_.end() ? found->get() : nullptr;
}

// After the call of a handler nothing of the form is touched: it may be gone.
void FormWindow::OnCommand(UINT id, WORD code) {
  if (mirroring_ > 0) return;
  if (id == IDOK && form_->defaultButton != nullptr) {
    form_->defaultButton->Press();
  } else if (id == IDCANCEL && form_->cancelButton != nullptr) {
    form_->cancelButton->Press();
  } else if (forms::MenuItem* const item = menu_.Find(id)) {
    item->Choose();
  } else if (ControlWindow* window = Find(id)) {
    window->OnCommand(code);
  }
}

LRESULT FormWindow::OnNotify(const NMHDR& header) {
  ControlWindow* window = Find(static_cast<UINT>(header.idFrom));
  return window != nullptr ? window->OnNotify(header, mirroring_ == 0) : 0;
}

void FormWindow::OnActivate(bool active) {
  if (active) return;
  const HWND focus = GetFocus();
  if (focus != nullptr && IsChild(window_, focus)) lastFocus_ = focus;
}

void FormWindow::TakeFocus() {
  if (lastFocus_ == nullptr || !IsWindowVisible(lastFocus_) || !IsWindowEnabled(lastFocus_)) {
    MoveFocus(GetNextDlgTabItem(window_, nullptr, FALSE));
  } else {
    SetFocus(lastFocus_);
  }
}

// As a dialog does: what is typed first replaces the text, and Enter presses the button that has
// the keyboard, or else the form's own.
void FormWindow::MoveFocus(HWND to) {
  lastFocus_ = to;
  if (to == nullptr) return;
  const LRESULT code = SendMessageW(to, WM_GETDLGCODE, 0, 0);
  if ((code & DLGC_HASSETSEL) != 0) SendMessageW(to, EM_SETSEL, 0, -1);
  const bool toButton = (code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0;
  for (const auto& window : controls_) {
    window->ShowAsDefault(toButton ? window->Get() == to
                                   : &window->GetControl() == form_->defaultButton);
  }
  if (GetActiveWindow() == window_) SetFocus(to);
}

}  // namespace orvanto::win32
