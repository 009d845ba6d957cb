#include "app/RemoteArea.h"

namespace orvanto {
void RemoteArea::SetLamps(bool connected, bool waiting) {
  window_.shpServeryes.SetLit(connected);
  window_.shpServerno.SetLit(waiting);
}

void RemoteArea::EnableClientCommands(bool enabled) {
  window_.cmdChat.SetEnabled(enabled);
  window_.cmdKick.SetEnabled(enabled);
}

void RemoteArea::ShowLog(TextLog& log) {
  logChanged_ = log.changed.Subscribe([this, &log] { window_.txtServer.SetText(log.Text()); });
}

}  // namespace orvanto
