// The remote control's area on the main window.
#pragma once

#include "core/TextLog.h"
#include "core/ui/frmScriptcfg.h"
#include "remote/Remote.h"

namespace orvanto {

class RemoteArea : public ServerArea {
 public:
  explicit RemoteArea(frmScriptcfg& window) : window_(window) {}

  void ShowServer(bool on) override { window_.ShowServerArea(on); }
  void SetCaption(const std::string& caption) override { window_.fraServer.SetText(caption); }
  void SetLamps(bool connected, bool waiting) override;
  void SetClient(const std::string& address) override { window_.lblIpclient.SetText(address); }
  void EnableClientCommands(bool enabled) override;

  // Shows the log, which must outlive this or never change again, from its next change on.
  void ShowLog(TextLog& log);

 private:
  frmScriptcfg& window_;
  Subscription logChanged_;
};

}  // namespace orvanto
