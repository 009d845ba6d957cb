#include <algorithm>

#include "platform/win32/Text.h"
#include "platform/win32/forms/ControlKinds.h"

namespace orvanto::win32 {

using forms::Property;

namespace {

constexpr int kVisibleItems = 12;

DWORD StyleOf(const forms::ComboBox& combo) {
  const DWORD kind = combo.GetStyle().editable ? CBS_DROPDOWN | CBS_AUTOHSCROLL : CBS_DROPDOWNLIST;
  return kind | CBS_HASSTRINGS | WS_VSCROLL | WS_TABSTOP;
}

int HeightOf(HWND window) {
  RECT place = {};
  GetWindowRect(window, &place);
  return place.bottom - place.top;
}

// Windows of one form are numbered in the order of its controls.
HWND BuddyOf(const forms::UpDown& upDown, HWND parent, int id) {
  const auto& controls = upDown.Owner().Controls();
  const auto self = std::find(controls.begin(), controls.end(), &upDown);
  const auto buddy = std::find(controls.begin(), controls.end(), &upDown.Buddy());
  return GetDlgItem(parent, id - static_cast<int>(self - buddy));
}

class ComboWindow : public ControlWindow {
 public:
  ComboWindow(forms::ComboBox& combo, HWND parent, int id);

  void Mirror(forms::Property property) override;
  void Place(const RECT& place) override;
  void OnCommand(WORD code) override;

 private:
  void Fill() const;
  void MirrorSelection() const;
  int WindowSelection() const;

  forms::ComboBox& combo_;
};

class UpDownWindow : public ControlWindow {
 public:
  UpDownWindow(forms::UpDown& upDown, HWND parent, int id);

  LRESULT OnNotify(const NMHDR& header, bool person) override;

 private:
  forms::UpDown& upDown_;
};

ComboWindow::ComboWindow(forms::ComboBox& combo, HWND parent, int id)
    : ControlWindow(combo, {WC_COMBOBOXW, StyleOf(combo)}, parent, id), combo_(combo) {
  SendMessageW(window_, CB_SETMINVISIBLE, kVisibleItems, 0);
  Fill();
}

void ComboWindow::Mirror(Property property) {
  if (property == Property::Items) Fill();
  if (property == Property::Selection) MirrorSelection();
  if (property == Property::Text) SetWindowTextIfOther(combo_.Text());
}

void ComboWindow::Fill() const {
  SendMessageW(window_, CB_RESETCONTENT, 0, 0);
  for (const std::string& item : combo_.Items()) {
    SendMessageW(window_, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(ToWide(item).c_str()));
  }
  MirrorSelection();
}

void ComboWindow::MirrorSelection() const {
  if (const int index = combo_.SelectedIndex(); index != WindowSelection()) {
    SendMessageW(window_, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
  }
  if (combo_.GetStyle().editable) SetWindowTextIfOther(combo_.Text());
}

int ComboWindow::WindowSelection() const {
  return static_cast<int>(SendMessageW(window_, CB_GETCURSEL, 0, 0));
}

// The window's own height is that of the open list; what is closed follows the font, unless told to
// be as high as the text boxes beside it.
void ComboWindow::Place(const RECT& place) {
  const int height = place.bottom - place.top;
  const auto item = static_cast<int>(SendMessageW(window_, CB_GETITEMHEIGHT, 0, 0));
  SetWindowPos(window_, nullptr, place.left, place.top, place.right - place.left,
               height + item * (kVisibleItems + 1), SWP_NOZORDER | SWP_NOACTIVATE);
  constexpr auto kField = static_cast<WPARAM>(-1);
  const auto field = static_cast<int>(SendMessageW(window_, CB_GETITEMHEIGHT, kField, 0));
  SendMessageW(window_, CB_SETITEMHEIGHT, kField, std::max(field + height - HeightOf(window_), 1));
  // Laying itself out anew has selected the text.
  SendMessageW(window_, CB_SETEDITSEL, 0, 0);
}

void ComboWindow::OnCommand(WORD code) {
  switch (code) {
    case CBN_SELCHANGE:
      combo_.Choose(WindowSelection());
      break;
    case CBN_EDITCHANGE:
      combo_.Type(WindowText(window_));
      break;
    case CBN_CLOSEUP:
      // Esc may have taken back what the arrow keys had chosen in the open list.
      if (!combo_.GetStyle().editable) {
        if (WindowSelection() != combo_.SelectedIndex()) combo_.Choose(WindowSelection());
      } else if (const std::string text = WindowText(window_); text != combo_.Text()) {
        combo_.Type(text);
      }
      break;
    default:
      break;
  }
}

UpDownWindow::UpDownWindow(forms::UpDown& upDown, HWND parent, int id)
    : ControlWindow(upDown, {UPDOWN_CLASSW, UDS_ARROWKEYS}, parent, id), upDown_(upDown) {
  SendMessageW(window_, UDM_SETBUDDY, reinterpret_cast<WPARAM>(BuddyOf(upDown, parent, id)), 0);
  // The number is in the text box. The window's own position never moves, and has room both ways.
  SendMessageW(window_, UDM_SETRANGE32, static_cast<WPARAM>(-1), 1);
  SendMessageW(window_, UDM_SETPOS32, 0, 0);
}

LRESULT UpDownWindow::OnNotify(const NMHDR& header, bool person) {
  if (header.code != static_cast<UINT>(UDN_DELTAPOS) || !person) return 0;
  const auto& change = reinterpret_cast<const NMUPDOWN&>(header);
  if (change.iDelta != 0) upDown_.Step(change.iDelta > 0 ? 1 : -1);
  return TRUE;  // the position stays
}

}  // namespace

NewControlWindow MakeWindow(forms::ComboBox& combo, HWND parent, int id) {
  return std::make_unique<ComboWindow>(combo, parent, id);
}

NewControlWindow MakeWindow(forms::UpDown& upDown, HWND parent, int id) {
  return std::make_unique<UpDownWindow>(upDown, parent, id);
}

}  // namespace orvanto::win32
