// Names that Windows takes for devices.
#pragma once

#include <string_view>

#include "platform/text/Case.h"

namespace orvanto {

// Whatever follows the first point of the name, in any folder and case: "CON", "nul.txt".
inline bool IsDeviceName(std::string_view name) {
  std::string_view stem = name.substr(0, name.find('.'));
  while (stem.starts_with(' ')) stem.remove_prefix(1);
  while (stem.ends_with(' ')) stem.remove_suffix(1);
  for (const char* const device : {"con", "prn", "aux", "nul", "conin$", "conout$"}) {
    if (EqualIgnoringCase(stem, device)) return true;
  }
  const std::string_view kind = stem.substr(0, 3);
  if (!EqualIgnoringCase(kind, "com") && !EqualIgnoringCase(kind, "lpt")) return false;
  const std::string_view number = stem.substr(3);
  return (number.size() == 1 && number[0] >= '0' && number[0] <= '9') || number == "\u00B9" ||
         number == "\u00B2" || number == "\u00B3";
}

}  // namespace orvanto
