// The window of a form, with those of its controls and its menu.
#pragma once

#include <windows.h>

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "platform/forms/forms.h"
#include "platform/win32/Handle.h"
#include "platform/win32/forms/ControlWindow.h"
#include "platform/win32/forms/FormMenu.h"
#include "platform/win32/forms/Tips.h"

namespace orvanto::win32 {

// Lives from Attach until its window is destroyed, which is some time after Detach: a handler may
// unload its own form while messages of the window are on the stack. From Detach on it touches
// neither the form nor its controls.
class FormWindow {
 public:
  // `gone` is called when the window has been destroyed, as the last thing; it may delete this.
  FormWindow(forms::Form& form, HWND owner, std::function<void(FormWindow&)> gone);
  ~FormWindow();
  FormWindow(const FormWindow&) = delete;
  FormWindow& operator=(const FormWindow&) = delete;

  HWND Get() const { return window_; }

  void FormChanged(forms::FormProperty property);
  void ControlChanged(const forms::Control& control, forms::Property property);
  void MenuChanged(const forms::MenuItem& item);
  forms::Bounds Place() const;
  void Detach();

 private:
  using Icon = Handle<HICON, DestroyIcon>;

  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT OnSystemChange(UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT OnStaticColour(HDC context, HWND control);
  void OnCommand(UINT id, WORD code);
  LRESULT OnNotify(const NMHDR& header);
  void OnActivate(bool active);
  void TakeFocus();
  void MoveFocus(HWND to);
  void DestroyWhenIdle();

  void MakeWindow(HWND owner);
  void MakeControls();
  void Rescale();
  void Place(ControlWindow& window) const;
  void MirrorState(const ControlWindow& window);
  void MirrorOptionStops() const;
  POINT Corner() const;
  void MoveToPosition() const;
  void KeepOnScreen() const;
  void OnSize(WPARAM how);
  ControlWindow* Find(UINT id) const;
  ControlWindow* Find(const forms::Control* control) const;
  HBRUSH GroundOf(const ControlWindow& window) const;
  void PaintGrounds(HDC context) const;

  forms::Form* form_;  // null when detached
  std::function<void(FormWindow&)> gone_;
  HWND window_ = nullptr;
  UINT dpi_ = USER_DEFAULT_SCREEN_DPI;
  Handle<HFONT, DeleteObject> font_;
  std::array<Icon, 2> icons_;  // ICON_SMALL and ICON_BIG
  std::vector<std::unique_ptr<ControlWindow>> controls_;
  FormMenu menu_;
  Tips tips_;
  bool minimized_ = false;
  HWND lastFocus_ = nullptr;  // has the keyboard when the form next comes to the front
  int depth_ = 0;             // messages of this window on the stack
  int mirroring_ = 0;         // > 0: what the windows report now comes from us, not from a person
};

}  // namespace orvanto::win32
