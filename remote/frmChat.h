// The window of a chat with the remote client.
#pragma once

#include <functional>
#include <string>

#include "core/TextLog.h"
#include "platform/forms/forms.h"

namespace orvanto {

class frmChat : public forms::Form {
 public:
  explicit frmChat(forms::FormHost& host);

  void Open();  // empty and centred, unless a chat is open already
  // Puts the text at the end of the conversation.
  void Append(const std::string& text);

  std::function<void(const std::string& line)> onLine;  // a line to be sent
  std::function<void()> onQuit;

  // For a host that shows the chat in its own way.
  std::function<void()> onOpened;
  std::function<void(const std::string& text)> onAppended;

  // First in the tab order, so that the keyboard is there when the window opens.
  forms::TextBox txtSend;
  forms::Button cmdQuit;
  forms::TextBox txtChat;

 private:
  TextLog conversation_;
  Subscription conversationChanged_;
};

}  // namespace orvanto
