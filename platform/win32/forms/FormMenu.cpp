#include "platform/win32/forms/FormMenu.h"

#include "platform/win32/Handle.h"
#include "platform/win32/Text.h"

namespace orvanto::win32 {
namespace {

constexpr UINT kFirstCommand = 0x1000;  // above the controls

UINT EnabledFlag(const forms::MenuItem& item) { return item.Enabled() ? MF_ENABLED : MF_GRAYED; }

}  // namespace

HMENU FormMenu::Make(const std::vector<forms::MenuItem*>& bar) {
  if (bar.empty()) return nullptr;
  const HMENU menu = CreateMenu();
  Fill(menu, bar);
  return menu;
}

void FormMenu::Fill(HMENU menu, const std::vector<forms::MenuItem*>& items) {
  for (forms::MenuItem* item : items) {
    const auto position = static_cast<UINT>(GetMenuItemCount(menu));
    if (item->IsSeparator()) {
      AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    } else if (item->Items().empty()) {
      AppendMenuW(menu, MF_STRING, kFirstCommand + places_.size(), ToWide(item->Caption()).c_str());
    } else {
      AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(CreatePopupMenu()),
                  ToWide(item->Caption()).c_str());
    }
    places_.push_back({item, menu, position});
    Mirror(places_.back());
    if (!item->Items().empty()) Fill(GetSubMenu(menu, static_cast<int>(position)), item->Items());
  }
}

void FormMenu::Mirror(const Place& place) {
  const UINT checked = place.item->Checked() ? MF_CHECKED : MF_UNCHECKED;
  EnableMenuItem(place.menu, place.position, MF_BYPOSITION | EnabledFlag(*place.item));
  CheckMenuItem(place.menu, place.position, MF_BYPOSITION | checked);
}

HMENU FormMenu::Changed(const forms::MenuItem& item) const {
  for (const Place& place : places_) {
    if (place.item != &item) continue;
    Mirror(place);
    return place.menu;
  }
  return nullptr;
}

forms::MenuItem* FormMenu::Find(UINT command) const {
  const std::size_t at = command - kFirstCommand;
  return command >= kFirstCommand && at < places_.size() ? places_[at].item : nullptr;
}

forms::MenuItem* ChooseFrom(const forms::MenuItem& menu, HWND form, POINT place) {
  const std::vector<forms::MenuItem*> items = menu.Items();
  const Handle<HMENU, DestroyMenu> shown(CreatePopupMenu());
  for (std::size_t i = 0; i < items.size(); ++i) {
    AppendMenuW(shown.Get(), MF_STRING | EnabledFlag(*items[i]), i + 1,
                ToWide(items[i]->Caption()).c_str());
  }
  const int chosen = TrackPopupMenuEx(shown.Get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, place.x,
                                      place.y, form, nullptr);
  return chosen > 0 ? items[static_cast<std::size_t>(chosen - 1)] : nullptr;
}

}  // namespace orvanto::win32
