#include "app/RemoteArea.h"

namespace orvanto {
namespace {

// Heights of the task tree, in twips: above the server's area, and alone.
constexpr int kTreeAboveServer = 1425;
constexpr int kTreeAlone = 3375;

}  // namespace

void RemoteArea::ShowServer(bool on) {
  (on ? window_.optIneton : window_.optInetoff).SetValue(true);
  window_.treTasks.SetHeight(on ? kTreeAboveServer : kTreeAlone);
  window_.fraServer.SetVisible(on);
}

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

void RemoteArea::TaskListChanged() {
  if (window_.Loaded()) window_.BuildTaskTree();
}

}  // namespace orvanto
