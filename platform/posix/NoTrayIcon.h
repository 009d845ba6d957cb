// The notification area of a host without a desktop.
#pragma once

#include "platform/TrayIcon.h"

namespace orvanto::posix {

class NoTrayIcon : public TrayIcon {
 public:
  void Add(const std::string&) override {}
  void Remove() override {}
};

}  // namespace orvanto::posix
