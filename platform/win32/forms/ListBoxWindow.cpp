#include <algorithm>
#include <span>

#include "platform/win32/Text.h"
#include "platform/win32/forms/ControlKinds.h"

namespace orvanto::win32 {

using forms::Property;

namespace {

class ListBoxWindow : public ControlWindow {
 public:
  ListBoxWindow(forms::ListBox& list, HWND parent, int id)
      : ControlWindow(list, {WC_LISTBOXW, kStyle, WS_EX_CLIENTEDGE}, parent, id), list_(list) {}

  void Mirror(Property property) override {
    if (property == Property::Items) Fill();
    if (property == Property::LastItem) {
      const bool follows = Follows();
      Add({&list_.Items().back(), 1});
      if (follows) ShowEnd();
    }
    if (property == Property::Selection) MirrorSelection();
  }

  void Rescale(UINT) override { Fill(); }

  void OnCommand(WORD code) override {
    if (code == LBN_SELCHANGE) list_.Choose(WindowSelection());
    if (code == LBN_DBLCLK || code == BN_CLICKED) list_.PressEnter();
  }

  bool TakesEnter() const override {
    return list_.onEnter != nullptr && list_.SelectedIndex() != forms::ListBox::kNone;
  }

 private:
  static constexpr DWORD kStyle =
      WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOTIFY | LBS_HASSTRINGS | LBS_NOINTEGRALHEIGHT;

  void Fill() {
    const bool follows = Follows();
    const LRESULT top = SendMessageW(window_, LB_GETTOPINDEX, 0, 0);
    SendMessageW(window_, WM_SETREDRAW, FALSE, 0);
    SendMessageW(window_, LB_RESETCONTENT, 0, 0);
    widest_ = 0;
    Add(list_.Items());
    SendMessageW(window_, LB_SETTOPINDEX, static_cast<WPARAM>(top), 0);
    MirrorSelection();
    if (follows) ShowEnd();
    SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(window_, nullptr, TRUE);
  }

  // The window does not see by itself how far there is to scroll sideways.
  void Add(std::span<const std::string> items) {
    const HDC context = GetDC(window_);
    const HGDIOBJ old =
        SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(window_, WM_GETFONT, 0, 0)));
    const int margin = GetSystemMetrics(SM_CXEDGE) * 4;
    for (const std::string& item : items) {
      const std::wstring text = ToWide(item);
      SendMessageW(window_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
      SIZE size = {};
      GetTextExtentPoint32W(context, text.c_str(), static_cast<int>(text.size()), &size);
      widest_ = std::max(widest_, static_cast<int>(size.cx) + margin);
    }
    SelectObject(context, old);
    ReleaseDC(window_, context);
    SendMessageW(window_, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(widest_), 0);
  }

  WPARAM Last() const { return static_cast<WPARAM>(SendMessageW(window_, LB_GETCOUNT, 0, 0) - 1); }

  // The end is in sight.
  bool Follows() const {
    RECT inside = {};
    RECT last = {};
    GetClientRect(window_, &inside);
    SendMessageW(window_, LB_GETITEMRECT, Last(), reinterpret_cast<LPARAM>(&last));
    return list_.followsEnd && last.top < inside.bottom;
  }

  // The arrow keys begin there too, unless a person has selected a line.
  void ShowEnd() const {
    SendMessageW(window_, LB_SETTOPINDEX, Last(), 0);
    SendMessageW(window_, LB_SETCARETINDEX, Last(), FALSE);
  }

  void MirrorSelection() const {
    const int index = list_.SelectedIndex();
    if (index != WindowSelection()) {
      SendMessageW(window_, LB_SETCURSEL, static_cast<WPARAM>(index), 0);
    }
  }

  int WindowSelection() const {
    return static_cast<int>(SendMessageW(window_, LB_GETCURSEL, 0, 0));
  }

  forms::ListBox& list_;
  int widest_ = 0;  // in pixels
};

}  // namespace

NewControlWindow MakeWindow(forms::ListBox& list, HWND parent, int id) {
  return std::make_unique<ListBoxWindow>(list, parent, id);
}

}  // namespace orvanto::win32
