// The windows of the controls with a choice.
#pragma once

#include "platform/win32/forms/ControlWindow.h"

namespace orvanto::win32 {

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

}  // namespace orvanto::win32
