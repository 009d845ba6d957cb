// What makes the window of each kind of control.
#pragma once

#include "platform/win32/forms/ControlWindow.h"

namespace orvanto::win32 {

using NewControlWindow = std::unique_ptr<ControlWindow>;

NewControlWindow MakeWindow(forms::Button& button, HWND parent, int id);
NewControlWindow MakeWindow(forms::CheckBox& check, HWND parent, int id);
NewControlWindow MakeWindow(forms::ComboBox& combo, HWND parent, int id);
NewControlWindow MakeWindow(forms::Frame& frame, HWND parent, int id);
NewControlWindow MakeWindow(forms::Label& label, HWND parent, int id);
NewControlWindow MakeWindow(forms::Lamp& lamp, HWND parent, int id);
NewControlWindow MakeWindow(forms::ListBox& list, HWND parent, int id);
NewControlWindow MakeWindow(forms::OptionButton& option, HWND parent, int id);
NewControlWindow MakeWindow(forms::PictureBox& picture, HWND parent, int id);
NewControlWindow MakeWindow(forms::TabPage& page, HWND parent, int id);
NewControlWindow MakeWindow(forms::TabStrip& tabs, HWND parent, int id);
NewControlWindow MakeWindow(forms::TextBox& box, HWND parent, int id);
NewControlWindow MakeWindow(forms::TreeView& tree, HWND parent, int id);
NewControlWindow MakeWindow(forms::UpDown& upDown, HWND parent, int id);

}  // namespace orvanto::win32
