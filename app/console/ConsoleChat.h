// The chat window of a host that has none: lines on the terminal.
#pragma once

#include <ostream>
#include <string>

namespace orvanto {

class Program;

class ConsoleChat {
 public:
  // Prints what is said in a chat. Both must outlive this.
  ConsoleChat(Program& program, std::ostream& out);

  // A line that was typed. In a chat it is sent, and "/" ends the chat; otherwise "chat" starts one
  // with the client and "kick" ends the client's connection.
  void Line(const std::string& line);

 private:
  Program& program_;
  std::ostream& out_;
};

}  // namespace orvanto
