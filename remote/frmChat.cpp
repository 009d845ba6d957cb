#include "remote/frmChat.h"

namespace orvanto {

frmChat::frmChat(forms::FormHost& host)
    : Form(host, "Chat", {6600, 4200}),
      txtSend(*this, nullptr, {}, {120, 3240, 6360, 345}),
      cmdQuit(*this, nullptr, "&Quit", {5250, 3705, 1230, 375}),
      txtChat(*this, nullptr, {.multiLine = true, .readOnly = true}, {120, 120, 6360, 3000}) {
  helpPage = "remote-control";
  txtSend.spokenName = "Your line";
  txtChat.spokenName = "Conversation";
  txtSend.onEnter = [this] {
    const std::string line = txtSend.Text();
    txtSend.SetText("");
    if (onLine) onLine(line);
  };
  cmdQuit.onClick = [this] {
    if (onQuit) onQuit();
  };
  conversationChanged_ =
      conversation_.changed.Subscribe([this] { txtChat.SetText(conversation_.Text()); });
  // The client is not told: the chat goes on until he or the local user ends it.
  onClose = [this] { Hide(); };
}

void frmChat::Open() {
  if (!Loaded()) {
    conversation_.Begin("");
    txtSend.SetText("");
    CentreOnScreen();
  }
  Activate();
  if (onOpened) onOpened();
}

void frmChat::Append(const std::string& text) {
  conversation_.Append(text);
  if (onAppended) onAppended(text);
}

}  // namespace orvanto
