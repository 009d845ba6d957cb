// The menus of a form: its bar, and those that its controls open.
#pragma once

#include <windows.h>

#include <vector>

#include "platform/forms/forms.h"

namespace orvanto::win32 {

// Mirrors a menu bar. The items must live as long as it is used.
class FormMenu {
 public:
  // A menu for the window that is to have it, or null for a form without one.
  HMENU Make(const std::vector<forms::MenuItem*>& bar);
  // The menu that it stands in; null: none of the bar's.
  HMENU Changed(const forms::MenuItem& item) const;
  // The item that a menu command stands for; null: none.
  forms::MenuItem* Find(UINT command) const;
  void Clear() { places_.clear(); }

 private:
  struct Place {
    forms::MenuItem* item;
    HMENU menu;
    UINT position;
  };
  void Fill(HMENU menu, const std::vector<forms::MenuItem*>& items);
  static void Mirror(const Place& place);

  std::vector<Place> places_;
};

// Lets a person choose, at a point of the screen; null: nothing. Handles messages meanwhile.
forms::MenuItem* ChooseFrom(const forms::MenuItem& menu, HWND form, POINT place);

}  // namespace orvanto::win32
