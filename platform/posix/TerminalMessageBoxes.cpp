#include "platform/posix/TerminalMessageBoxes.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/Descriptor.h"
#include "platform/registry/RegistryTree.h"
#include "platform/text/Case.h"
#include "platform/text/PrintableLine.h"

namespace orvanto::posix {
namespace {

struct Choice {
  std::string_view word;  // or its first letter
  Answer answer;
};

struct Question {
  const char* prompt;
  Answer safe;
  std::vector<Choice> choices;  // none: any line will do
};

const Question& QuestionOf(Buttons buttons) {
  static const Question kOk{"[Enter] ", Answer::Ok, {}};
  static const Question kOkCancel{
      "[o]k/[c]ancel: ", Answer::Cancel, {{"ok", Answer::Ok}, {"cancel", Answer::Cancel}}};
  static const Question kYesNo{
      "[y]es/[n]o: ", Answer::No, {{"yes", Answer::Yes}, {"no", Answer::No}}};
  static const Question kRetryCancel{
      "[r]etry/[c]ancel: ", Answer::Cancel, {{"retry", Answer::Retry}, {"cancel", Answer::Cancel}}};
  switch (buttons) {
    case Buttons::OkCancel:
      return kOkCancel;
    case Buttons::YesNo:
    case Buttons::NoUnlessYes:
      return kYesNo;
    case Buttons::RetryCancel:
      return kRetryCancel;
    default:
      return kOk;
  }
}

std::optional<Answer> Understand(const std::string& line, const Question& question) {
  const std::string word = FoldCase(line);
  for (const Choice& choice : question.choices) {
    if (word == choice.word || word == choice.word.substr(0, 1)) return choice.answer;
  }
  return question.choices.empty() ? std::optional(question.safe) : std::nullopt;
}

// The text may come from a remote computer. Its line ends stay, and its tabs become blanks.
std::string PrintableText(std::string text) {
  std::replace(text.begin(), text.end(), '\t', ' ');
  std::string printable;
  for (std::size_t begin = 0;;) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    std::string_view line = std::string_view(text).substr(begin, end - begin);
    if (line.ends_with('\r')) line.remove_suffix(1);
    printable += PrintableLine(line);
    if (end == text.size()) return printable;
    printable += '\n';
    begin = end + 1;
  }
}

}  // namespace

Answer TerminalMessageBoxes::Show(const std::string& text, const std::string& title,
                                  Buttons buttons, BoxIcon) {
  Answer answer;
  {
    const EventLoop::Hold hold(loop_);
    answer = Ask(text, title, buttons);
  }
  loop_.DeliverSignals();
  return answer;
}

void TerminalMessageBoxes::Tell(const std::string& text, const std::string& title) const {
  Print(PrintableLine(title) + ": " + PrintableText(text) + '\n');
}

Answer TerminalMessageBoxes::Ask(const std::string& text, const std::string& title,
                                 Buttons buttons) const {
  const Question& question = QuestionOf(buttons);
  if (!CanAsk()) {
    Tell(text, title);
    return question.safe;
  }
  Print(PrintableLine(title) + '\n' + PrintableText(text) + '\n');
  for (;;) {
    Print(question.prompt);
    const std::optional<std::string> line = ReadLine();
    if (!line) {
      Print("\n");
      return question.safe;
    }
    if (const auto answer = Understand(*line, question)) return *answer;
  }
}

bool TerminalMessageBoxes::CanAsk() const {
  if (::isatty(input_) == 0 || ::isatty(output_) == 0) return false;
  // In the background, reading from the terminal would stop the program.
  const pid_t foreground = ::tcgetpgrp(input_);
  return foreground < 0 || foreground == ::getpgrp();
}

void TerminalMessageBoxes::Print(const std::string& text) const {
  WriteAll(output_, text.data(), text.size());
}

// A line without its blanks; nothing at the end of the input or when a signal came.
std::optional<std::string> TerminalMessageBoxes::ReadLine() const {
  std::string line;
  for (;;) {
    pollfd waited[] = {{input_, POLLIN, 0}, {loop_.SignalFd(), POLLIN, 0}};
    if (::poll(waited, 2, -1) < 0) {
      if (errno == EINTR) continue;
      return std::nullopt;
    }
    if (waited[1].revents != 0) return std::nullopt;
    // Byte by byte: what follows the line belongs to somebody else.
    char c = 0;
    const ssize_t count = ::read(input_, &c, 1);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count <= 0) return std::nullopt;
    if (c == '\n') return line;
    if (c != ' ' && c != '\t' && c != '\r') line += c;
  }
}

}  // namespace orvanto::posix
