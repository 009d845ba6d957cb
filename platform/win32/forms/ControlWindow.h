// The windows of the controls. Each kind is a class of its own, in a file that only
// MakeControlWindow knows of.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <string>

#include "platform/forms/forms.h"
#include "platform/win32/Handle.h"

namespace orvanto::win32 {

// Made and used by the form's window, which calls nothing of it any more once the control may be
// gone. All windows stand side by side on the form, so a frame is one that the others lie on.
class ControlWindow {
 public:
  struct Look {
    const wchar_t* windowClass;
    DWORD style;
    DWORD extendedStyle = 0;
  };

  ControlWindow(forms::Control& control, const Look& look, HWND parent, int id);
  ControlWindow(const ControlWindow&) = delete;
  ControlWindow& operator=(const ControlWindow&) = delete;
  virtual ~ControlWindow() = default;

  HWND Get() const { return window_; }
  forms::Control& GetControl() const { return control_; }

  // From the control to the window. Bounds, Visible and Enabled are the form window's business.
  virtual void Mirror(forms::Property property);
  // In pixels on the form.
  virtual void Place(const RECT& place);
  // Once after creation, and again when font, images and scale have changed.
  virtual void Rescale(UINT /*dpi*/) {}
  // Whether Enter presses it, as the form has decided; for what can be pressed.
  virtual void ShowAsDefault(bool /*isDefault*/) {}

  // From the user to the control; may unload the form or run the loop.
  virtual void OnCommand(WORD /*code*/) {}
  // `person` is false while the report is only the echo of a change of our own.
  virtual LRESULT OnNotify(const NMHDR& /*header*/, bool /*person*/) { return 0; }

  virtual void OnDraw(const DRAWITEMSTRUCT& /*draw*/) const {}

  // Enter in it is its own, reported as BN_CLICKED, and not the default button's.
  virtual bool TakesEnter() const { return false; }
  // What lies behind the controls that stand in it, in pixels on the form; without a brush, what
  // lies behind itself.
  struct Ground {
    RECT place;
    HBRUSH brush = nullptr;
  };
  virtual Ground GetGround() const { return {}; }
  // The mouse is told its name where no label tells it.
  virtual bool WantsTip() const { return true; }
  // Its text stands on the colour of what can be written on, not on that of the form.
  virtual bool IsField() const { return false; }

 protected:
  // Setting an equal text would move the caret of the person who has just typed it.
  void SetWindowTextIfOther(const std::string& text) const;

  HWND window_ = nullptr;  // destroyed with its parent

 private:
  forms::Control& control_;
};

std::unique_ptr<ControlWindow> MakeControlWindow(forms::Control& control, HWND parent, int id);

// Where it stands on its form, in pixels.
RECT PlaceOf(const forms::Control& control, UINT dpi);
// WS_VISIBLE and WS_DISABLED, by itself and by all that it stands in.
DWORD StateOf(const forms::Control& control);

// The text of a window, as UTF-8.
std::string WindowText(HWND window);

}  // namespace orvanto::win32
