// Lines out of what arrives from the network.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orvanto {

class LineAssembler {
 public:
  enum class Policy {
    // A client that sends key by key: CR LF, CR NUL, CR or LF ends the line when it arrives alone,
    // and is text otherwise (CR NUL as CR LF).
    Keys,
    // A client that sends lines, in pieces or several at a time: the same ends count wherever they
    // stand, and it does not matter where the arrivals are cut.
    Lines,
    // The same, where Backspace takes the last character back.
    Edited,
    // A client whose lines end in CR LF and nothing else.
    Commands,
  };

  // What of a line is longer than `longest` bytes is dropped.
  LineAssembler(Policy policy, std::size_t longest) : policy_(policy), longest_(longest) {}

  struct Piece {
    bool complete = false;
    std::string text;     // what was typed, all of it; or the complete line
    bool erased = false;  // the last character of the line
  };

  // An arrival; what of the last one has not been taken by Next is dropped.
  void Feed(std::string arrival);
  // The next piece of the arrival; nothing when all of it is taken.
  std::optional<Piece> Next();
  // Whether some of it is left.
  bool HasMore() const { return taken_ < arrival_.size(); }

  // What has been typed since the last complete line. It may be put back.
  const std::string& Line() const { return line_; }
  void SetLine(std::string line) { line_ = std::move(line); }

  // For another connection: drops the arrival, and half a line end. The line stays.
  void Restart();

 private:
  void DropRestOfEnd();
  Piece Key(std::string_view chunk);
  Piece PartOfLine(std::string_view rest, std::string_view ends);
  Piece Erase();
  Piece PartOfCommand(std::string_view rest);
  Piece Typed(std::string text);
  Piece Complete() { return {.complete = true, .text = std::exchange(line_, {}), .erased = false}; }

  Policy policy_;
  std::size_t longest_;
  std::string arrival_;
  std::size_t taken_ = 0;  // of arrival_
  bool afterCr_ = false;   // a LF or NUL that comes now belongs to the line end before it
  bool halfEnd_ = false;   // of a command: the CR has come
  std::string line_;
};

}  // namespace orvanto
