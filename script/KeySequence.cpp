#include "script/KeySequence.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "core/Convert.h"
#include "platform/text/Case.h"
#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

struct NamedKey {
  std::string_view name;
  Key key;
};

constexpr std::array<NamedKey, 30> kNamedKeys{{
    {"ADD", Key::Add},
    {"BACKSPACE", Key::Backspace},
    {"BKSP", Key::Backspace},
    {"BREAK", Key::Break},
    {"BS", Key::Backspace},
    {"CAPSLOCK", Key::CapsLock},
    {"CLEAR", Key::Clear},
    {"DEL", Key::Delete},
    {"DELETE", Key::Delete},
    {"DIVIDE", Key::Divide},
    {"DOWN", Key::Down},
    {"END", Key::End},
    {"ENTER", Key::Enter},
    {"ESC", Key::Escape},
    {"ESCAPE", Key::Escape},
    {"HELP", Key::Help},
    {"HOME", Key::Home},
    {"INS", Key::Insert},
    {"INSERT", Key::Insert},
    {"LEFT", Key::Left},
    {"MULTIPLY", Key::Multiply},
    {"NUMLOCK", Key::NumLock},
    {"PGDN", Key::PageDown},
    {"PGUP", Key::PageUp},
    {"PRTSC", Key::PrintScreen},
    {"RIGHT", Key::Right},
    {"SCROLLLOCK", Key::ScrollLock},
    {"SUBTRACT", Key::Subtract},
    {"TAB", Key::Tab},
    {"UP", Key::Up},
}};

[[noreturn]] void Fail(const char* what) { throw Error(kIllegalCall, what); }

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  std::vector<KeyEvent> Parse() {
    while (!AtEnd()) Item();
    if (!groups_.empty()) Fail("A group is not closed");
    return std::move(events_);
  }

 private:
  // A parenthesis that is open, and the modifiers to release with it.
  using Modifiers = std::vector<Key>;

  bool AtEnd() const { return at_ == text_.size(); }

  void Item() {
    if (text_[at_] == ')') {
      CloseGroup();
      return;
    }
    Modifiers modifiers = HoldModifiers();
    if (AtEnd() || text_[at_] == ')') {
      // A modifier with nothing after it is tapped.
      Release(modifiers);
    } else if (text_[at_] == '(') {
      ++at_;
      groups_.push_back(std::move(modifiers));
    } else {
      Unit();
      Release(modifiers);
    }
  }

  Modifiers HoldModifiers() {
    Modifiers modifiers;
    for (; !AtEnd(); ++at_) {
      const char c = text_[at_];
      if (c != '+' && c != '^' && c != '%') break;
      const Key key = c == '+' ? Key::Shift : c == '^' ? Key::Control : Key::Alt;
      if (std::find(held_.begin(), held_.end(), key) != held_.end()) {
        Fail("A modifier is held already");
      }
      held_.push_back(key);
      modifiers.push_back(key);
      events_.push_back({KeyEvent::Action::Hold, key, 0, 1});
    }
    return modifiers;
  }

  // The last of the held ones, in the opposite order.
  void Release(const Modifiers& modifiers) {
    for (auto key = modifiers.rbegin(); key != modifiers.rend(); ++key) {
      held_.pop_back();
      events_.push_back({KeyEvent::Action::Release, *key, 0, 1});
    }
  }

  void CloseGroup() {
    if (groups_.empty()) Fail("A parenthesis closes nothing");
    ++at_;
    Release(groups_.back());
    groups_.pop_back();
  }

  void Unit() {
    const char c = text_[at_];
    if (c == '}') Fail("A brace closes nothing");
    if (c == '{') {
      Braced();
      return;
    }
    if (c == '~') {
      ++at_;
      Press(Key::Enter, 0, 1);
      return;
    }
    Press(Key::Character, Character(text_, at_), 1);
  }

  // {name}, {name count}: the name may itself be a closing brace.
  void Braced() {
    const std::size_t begin = at_ + 1;
    const std::size_t end =
        begin < text_.size() ? text_.find('}', begin + 1) : std::string_view::npos;
    if (end == std::string_view::npos) Fail("A brace is not closed");
    std::string_view inside = text_.substr(begin, end - begin);
    at_ = end + 1;

    // The name goes to the first blank, but a blank may be the name.
    const std::size_t blank = inside.find(' ', 1);
    const std::uint32_t count = blank == std::string_view::npos ? 1 : Count(inside.substr(blank));
    const std::string_view name = inside.substr(0, blank);
    std::size_t length = 0;
    const char32_t character = Character(name, length);
    if (length == name.size()) {
      Press(Key::Character, character, count);
    } else {
      PressNamed(name, count);
    }
  }

  static std::uint32_t Count(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    const auto last = text.find_last_not_of(' ');
    if (first == std::string_view::npos) Fail("A repeat count is missing");
    std::uint32_t count = 0;
    for (const char digit : text.substr(first, last - first + 1)) {
      if (digit < '0' || digit > '9') Fail("A repeat count is no number");
      count = std::min(kMostRepeats, count * 10 + static_cast<std::uint32_t>(digit - '0'));
    }
    return count;
  }

  void PressNamed(std::string_view name, std::uint32_t count) {
    for (const NamedKey& named : kNamedKeys) {
      if (!EqualIgnoringCase(name, named.name)) continue;
      Press(named.key, 0, count);
      return;
    }
    // F1 to F16
    const bool digits =
        name.size() <= 3 && name.find_first_not_of("0123456789", 1) == std::string_view::npos;
    const std::int16_t number = digits ? ToInt16Or(name.substr(1), 0) : std::int16_t{0};
    if ((name[0] != 'F' && name[0] != 'f') || name[1] == '0' || number < 1 || number > 16) {
      Fail("There is no such key");
    }
    Press(static_cast<Key>(static_cast<int>(Key::F1) + number - 1), 0, count);
  }

  void Press(Key key, char32_t character, std::uint32_t count) {
    if (count > 0) events_.push_back({KeyEvent::Action::Press, key, character, count});
  }

  // The character that begins at `at`, which moves past it.
  static char32_t Character(std::string_view text, std::size_t& at) {
    char32_t character = 0;
    const std::size_t length = DecodeUtf8(text, at, character);
    if (length == 0) return static_cast<unsigned char>(text[at++]);
    at += length;
    return character;
  }

  const std::string_view text_;
  std::size_t at_ = 0;
  std::vector<KeyEvent> events_;
  std::vector<Key> held_;
  std::vector<Modifiers> groups_;
};

}  // namespace

std::vector<KeyEvent> ParseKeySequence(const std::string& text) { return Parser(text).Parse(); }

}  // namespace orvanto
