#include "app/console/ConsoleChat.h"

#include "app/Program.h"
#include "platform/text/Lines.h"
#include "platform/text/PrintableLine.h"
#include "remote/Internet.h"
#include "remote/frmChat.h"

namespace orvanto {

ConsoleChat::ConsoleChat(Program& program, std::ostream& out) : program_(program), out_(out) {
  program.ChatWindow().onOpened = [this] {
    out_ << "A chat with the remote client has begun: type your lines, \"/\" ends it." << std::endl;
  };
  program.ChatWindow().onAppended = [this](const std::string& text) {
    const std::size_t begin = text.find_first_not_of(kCrLf);
    if (begin == std::string::npos) return;
    out_ << PrintableLine(text.substr(begin, text.find_last_not_of(kCrLf) - begin + 1))
         << std::endl;
  };
}

void ConsoleChat::Line(const std::string& line) {
  frmChat& chat = program_.ChatWindow();
  if (chat.Visible()) {
    if (line == "/") {
      chat.cmdQuit.Press();
    } else if (chat.txtSend.Type(line)) {
      chat.txtSend.PressEnter();
    }
  } else if (line == "chat") {
    program_.Telnet().StartChat();
  } else if (line == "kick" && program_.Telnet().Connected()) {
    program_.Telnet().Kick();
  }
}

}  // namespace orvanto
