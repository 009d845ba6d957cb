#include "platform/net/LineAssembler.h"

#include <algorithm>

#include "platform/text/Lines.h"
#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

constexpr std::string_view kBackspaces = "\b\x7F";

}  // namespace

void LineAssembler::Feed(std::string arrival) {
  arrival_ = std::move(arrival);
  taken_ = 0;
}

void LineAssembler::Restart() {
  Feed({});
  afterCr_ = false;
  halfEnd_ = false;
}

std::optional<LineAssembler::Piece> LineAssembler::Next() {
  DropRestOfEnd();
  if (policy_ == Policy::Edited && line_.empty()) {
    taken_ = std::min(arrival_.find_first_not_of(kBackspaces, taken_), arrival_.size());
  }
  const std::string_view rest = std::string_view(arrival_).substr(taken_);
  if (rest.empty()) return std::nullopt;
  switch (policy_) {
    case Policy::Keys:
      taken_ = arrival_.size();
      return Key(rest);
    case Policy::Lines:
      return PartOfLine(rest, kCrLf);
    case Policy::Edited:
      if (kBackspaces.find(rest[0]) != std::string_view::npos) return Erase();
      return PartOfLine(rest, "\r\n\b\x7F");
    case Policy::Commands:
      return PartOfCommand(rest);
  }
  return std::nullopt;
}

void LineAssembler::DropRestOfEnd() {
  if (!HasMore() || !std::exchange(afterCr_, false)) return;
  if (arrival_[taken_] == '\n' || arrival_[taken_] == '\0') ++taken_;
}

LineAssembler::Piece LineAssembler::Key(std::string_view chunk) {
  std::string text(chunk);
  for (std::size_t cr = text.find('\r'); cr != std::string::npos; cr = text.find('\r', cr + 1)) {
    if (cr + 1 < text.size() && text[cr + 1] == '\0') text[cr + 1] = '\n';
  }
  if (text != "\r" && text != "\n" && text != kCrLf) return Typed(std::move(text));
  afterCr_ = text == "\r";
  return Complete();
}

LineAssembler::Piece LineAssembler::PartOfLine(std::string_view rest, std::string_view ends) {
  const std::size_t text = std::min(rest.find_first_of(ends), rest.size());
  taken_ += std::max<std::size_t>(text, 1);
  if (text > 0) return Typed(std::string(rest.substr(0, text)));
  afterCr_ = rest[0] == '\r';
  DropRestOfEnd();
  return Complete();
}

LineAssembler::Piece LineAssembler::Erase() {
  ++taken_;
  while (IsContinuation(line_.back()) && line_.size() > 1) line_.pop_back();
  line_.pop_back();
  return {.complete = false, .text = {}, .erased = true};
}

LineAssembler::Piece LineAssembler::PartOfCommand(std::string_view rest) {
  if (std::exchange(halfEnd_, false)) {
    if (rest[0] == '\n') {
      ++taken_;
      return Complete();
    }
    Typed("\r");
  }
  const std::size_t end = rest.find(kCrLf);
  if (end == 0) {
    taken_ += 2;
    return Complete();
  }
  std::string text(rest.substr(0, end));
  taken_ += text.size();
  halfEnd_ = end == std::string_view::npos && text.ends_with('\r');
  if (halfEnd_) text.pop_back();
  return Typed(std::move(text));
}

LineAssembler::Piece LineAssembler::Typed(std::string text) {
  line_.append(text, 0, longest_ - std::min(longest_, line_.size()));
  return {.complete = false, .text = std::move(text), .erased = false};
}

}  // namespace orvanto
