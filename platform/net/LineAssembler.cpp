#include "platform/net/LineAssembler.h"

#include <algorithm>

#include "platform/text/Lines.h"

namespace orvanto {

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
  std::string_view rest = std::string_view(arrival_).substr(taken_);
  if (rest.empty()) return std::nullopt;
  if (std::exchange(afterCr_, false) && (rest[0] == '\n' || rest[0] == '\0')) {
    rest.remove_prefix(1);
    ++taken_;
  }
  if (rest.empty()) return std::nullopt;
  switch (policy_) {
    case Policy::Keys:
      taken_ = arrival_.size();
      return Key(rest);
    case Policy::Lines:
      return PartOfLine(rest);
    case Policy::Commands:
      return PartOfCommand(rest);
  }
  return std::nullopt;
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

LineAssembler::Piece LineAssembler::PartOfLine(std::string_view rest) {
  const std::size_t text = std::min(rest.find_first_of(kCrLf), rest.size());
  taken_ += std::max<std::size_t>(text, 1);
  if (text > 0) return Typed(std::string(rest.substr(0, text)));
  afterCr_ = rest[0] == '\r';
  return Complete();
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
  return {false, std::move(text)};
}

}  // namespace orvanto
