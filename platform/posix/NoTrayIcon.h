// The notification area of a host without a desktop.
#pragma once

#include "platform/TrayIcon.h"

namespace orvanto::posix {

class NoTrayIcon : public TrayIcon {
 public:
  void Add(const std::string&) override { added_ = true; }
  void Remove() override { added_ = false; }
  bool Added() const { return added_; }

 private:
  bool added_ = false;
};

}  // namespace orvanto::posix
