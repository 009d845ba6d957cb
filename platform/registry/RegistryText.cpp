#include "platform/registry/RegistryText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "platform/text/Case.h"
#include "platform/text/Utf8.h"
#include "platform/text/WholeNumber.h"

namespace orvanto {
namespace {

constexpr std::string_view kFirstLine = "Orvanto registry 1";
constexpr std::string_view kFormatName = "Orvanto registry ";
constexpr std::string_view kLastLine = "# end of registry";
constexpr std::string_view kAdvice =
    "# This file may be edited. The program writes it anew and does not keep comments.\n";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

constexpr std::array<std::pair<RootKey, std::string_view>, 6> kRoots = {{
    {RootKey::ClassesRoot, "HKEY_CLASSES_ROOT"},
    {RootKey::CurrentUser, "HKEY_CURRENT_USER"},
    {RootKey::LocalMachine, "HKEY_LOCAL_MACHINE"},
    {RootKey::Users, "HKEY_USERS"},
    {RootKey::CurrentConfig, "HKEY_CURRENT_CONFIG"},
    {RootKey::DynData, "HKEY_DYN_DATA"},
}};

std::string_view RootName(RootKey root) {
  for (const auto& [key, name] : kRoots) {
    if (key == root) return name;
  }
  return "";
}

void AppendHex(std::string& out, char byte) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto value = static_cast<unsigned char>(byte);
  out += kDigits[value >> 4];
  out += kDigits[value & 15];
}

// Copies `text`; what an editor could spoil, and each of `special`, becomes `escape` and two
// digits.
void AppendEscaped(std::string& out, std::string_view text, std::string_view escape,
                   std::string_view special) {
  while (!text.empty()) {
    char32_t character = 0;
    const std::size_t length = DecodeUtf8(text, 0, character);
    const char c = text[0];
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    if (length == 0 || control || special.find(c) != std::string_view::npos) {
      out += escape;
      AppendHex(out, c);
      text.remove_prefix(1);
    } else {
      out += text.substr(0, length);
      text.remove_prefix(length);
    }
  }
}

void AppendQuoted(std::string& out, std::string_view text) {
  constexpr std::string_view kNamed = "\\\"\r\n\t";
  constexpr std::string_view kNames = "\\\"rnt";
  out += '"';
  while (!text.empty()) {
    const std::size_t plain = std::min(text.find_first_of(kNamed), text.size());
    AppendEscaped(out, text.substr(0, plain), "\\x", "");
    text.remove_prefix(plain);
    if (text.empty()) break;
    out += '\\';
    out += kNames[kNamed.find(text[0])];
    text.remove_prefix(1);
  }
  out += '"';
}

void AppendData(std::string& out, const RegistryTree::Value& value) {
  const std::string& data = value.data;
  if (value.type == ValueType::String && !data.empty() && data.back() == '\0') {
    AppendQuoted(out, std::string_view(data).substr(0, data.size() - 1));
    return;
  }
  if (value.type == ValueType::Dword && data.size() == 4) {
    out += "dword:";
    for (std::size_t i = 4; i-- > 0;) AppendHex(out, data[i]);
    return;
  }
  out += "hex";
  if (value.type != ValueType::Binary) {
    out += '(' + std::to_string(static_cast<std::uint32_t>(value.type)) + ')';
  }
  char separator = ':';
  if (data.empty()) out += separator;
  for (const char byte : data) {
    out += std::exchange(separator, ',');
    AppendHex(out, byte);
  }
}

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return "";
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

bool EqualsWithoutCase(std::string_view a, std::string_view b) {
  return FoldCase(a) == FoldCase(b);
}

// All digits of `text`, at most `digits` of them, as a number of the base.
std::optional<std::uint32_t> Number(std::string_view text, int base, std::size_t digits) {
  return text.size() <= digits ? WholeNumber<std::uint32_t>(text, base) : std::nullopt;
}

std::optional<char> HexByte(std::string_view text) {
  const auto value = Number(text, 16, 2);
  if (!value || text.size() != 2) return std::nullopt;
  return static_cast<char>(*value);
}

class Parser {
 public:
  explicit Parser(RegistryTree& tree) : tree_(tree) {}

  std::optional<RegistryTextError> Parse(std::string_view text) {
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    bool ended = false;
    while (!text.empty()) {
      ++line_;
      const std::size_t end = text.find('\n');
      const std::string_view line = Trim(text.substr(0, end));
      text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
      if (ended && !line.empty())
        Fail("something follows the line \"" + std::string(kLastLine) + '"');
      if (line_ == 1) {
        FirstLine(line);
      } else if (line == kLastLine) {
        ended = true;
      } else if (!line.empty() && line[0] != '#' && line[0] != ';') {
        line[0] == '[' ? Section(line) : Value(line);
      }
      if (!reason_.empty()) return RegistryTextError{line_, reason_};
    }
    if (ended) return std::nullopt;
    return RegistryTextError{line_ + 1, "the file breaks off: the last line \"" +
                                            std::string(kLastLine) + "\" is missing"};
  }

 private:
  void Fail(const std::string& reason) {
    if (reason_.empty()) reason_ = reason;
  }

  void FirstLine(std::string_view line) {
    if (line == kFirstLine) return;
    const std::string expected = "the first line must be \"" + std::string(kFirstLine) + '"';
    Fail(line.starts_with(kFormatName) ? "the format is of another version; " + expected
                                       : expected);
  }

  void Section(std::string_view line) {
    if (line.back() != ']') return Fail("the key has no closing bracket");
    line = line.substr(1, line.size() - 2);
    const std::size_t rootEnd = std::min(line.find('\\'), line.size());
    const std::string_view rootName = line.substr(0, rootEnd);
    const std::optional<std::string> path =
        Unescape(line.substr(std::min(rootEnd + 1, line.size())));
    if (!path) return Fail("in a key, % must be followed by two hexadecimal digits (%25 is a %)");
    for (const auto& [root, name] : kRoots) {
      if (!EqualsWithoutCase(rootName, name)) continue;
      if (RegistryTree::IdOf(root, *path, section_) != kSuccess) {
        return Fail("a part of the key is empty or longer than 255 characters");
      }
      tree_.CreateKey(root, *path);
      return;
    }
    Fail(
        "the key must begin with one of HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT, "
        "HKEY_USERS, HKEY_CURRENT_CONFIG, HKEY_DYN_DATA");
  }

  static std::optional<std::string> Unescape(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] != '%') {
        plain += text[i];
        continue;
      }
      const auto byte = HexByte(text.substr(i + 1, 2));
      if (!byte) return std::nullopt;
      plain += *byte;
      i += 2;
    }
    return plain;
  }

  void Value(std::string_view line) {
    if (line[0] != '"') return Fail("a line must be a [key], a \"name\"=value or a # comment");
    if (section_.empty()) return Fail("a value stands before the first [key]");
    const std::optional<std::string> name = Quoted(line);
    if (!name) return;
    line = Trim(line);
    if (!line.starts_with('=')) return Fail("after the name of a value an = is missing");
    line = Trim(line.substr(1));
    if (line.starts_with('"')) {
      std::optional<std::string> text = Quoted(line);
      if (!text) return;
      if (!line.empty()) return Fail("something follows the closing quote of the text");
      tree_.SetValue(section_, *name, ValueType::String, std::move(*text) + '\0');
    } else if (line.starts_with("dword:")) {
      const auto number = Number(line.substr(6), 16, 8);
      if (!number) return Fail("after dword: up to eight hexadecimal digits must follow");
      std::string data;
      for (int shift = 0; shift < 32; shift += 8)
        data += static_cast<char>(*number >> shift & 0xFF);
      tree_.SetValue(section_, *name, ValueType::Dword, data);
    } else {
      Bytes(*name, line);
    }
  }

  void Bytes(const std::string& name, std::string_view line) {
    const std::size_t colon = std::min(line.find(':'), line.size());
    const std::string_view kind = line.substr(0, colon);
    std::optional<std::uint32_t> type;
    if (kind == "hex") type = static_cast<std::uint32_t>(ValueType::Binary);
    if (kind.starts_with("hex(") && kind.ends_with(')')) {
      type = Number(kind.substr(4, kind.size() - 5), 10, 10);
    }
    if (!type || colon == line.size())
      return Fail("a value must be a \"text\" in quotes, dword: or hex: and what follows them");
    std::string data;
    for (std::string_view rest = line.substr(colon + 1); !rest.empty();) {
      const std::size_t comma = rest.find(',');
      const auto byte = HexByte(Trim(rest.substr(0, comma)));
      const bool last = comma == std::string_view::npos;
      rest = last ? std::string_view() : rest.substr(comma + 1);
      if (!byte || (!last && rest.empty())) {
        return Fail("hex: must be followed by bytes of two digits each, with commas between");
      }
      data += *byte;
    }
    tree_.SetValue(section_, name, static_cast<ValueType>(*type), std::move(data));
  }

  // Takes the quoted text that `line` begins with off it.
  std::optional<std::string> Quoted(std::string_view& line) {
    std::string text;
    for (std::size_t i = 1; i < line.size(); ++i) {
      if (line[i] == '"') {
        line.remove_prefix(i + 1);
        return text;
      }
      if (line[i] != '\\') {
        text += line[i];
        continue;
      }
      const char kind = ++i < line.size() ? line[i] : '\0';
      const auto byte = kind == 'x' ? HexByte(line.substr(i + 1, 2)) : std::nullopt;
      if (byte) {
        text += *byte;
        i += 2;
      } else if (constexpr std::string_view kNames = "\\\"rnt";
                 kNames.find(kind) != std::string_view::npos) {
        text += "\\\"\r\n\t"[kNames.find(kind)];
      } else {
        Fail(
            "in quotes, a backslash must be followed by \\ \" r n t or by x and two digits "
            "(\\\\ is a backslash)");
        return std::nullopt;
      }
    }
    Fail("the closing quote is missing");
    return std::nullopt;
  }

  RegistryTree& tree_;
  std::string section_;  // the id of the key whose values are being read
  std::string reason_;
  int line_ = 0;
};

}  // namespace

std::string FormatRegistry(const RegistryTree& tree) {
  std::string text;
  text.append(kFirstLine).append("\n").append(kAdvice);
  const auto& keys = tree.Keys();
  for (auto key = keys.begin(); key != keys.end(); ++key) {
    const RegistryTree::Node& node = key->second;
    if (node.values.empty()) {
      // A key that is only on the way to others needs no section of its own, nor does a root.
      const std::string below = key->first + '\\';
      const auto next = keys.lower_bound(below);
      if (node.path.empty() || (next != keys.end() && next->first.starts_with(below))) continue;
    }
    text.append("\n[").append(RootName(node.root));
    if (!node.path.empty()) text += '\\';
    AppendEscaped(text, node.path, "%", "%");
    text += "]\n";
    for (const auto& [folded, value] : node.values) {
      AppendQuoted(text, value.name);
      text += '=';
      AppendData(text, value);
      text += '\n';
    }
  }
  return text.append("\n").append(kLastLine).append("\n");
}

std::optional<RegistryTextError> ParseRegistry(std::string_view text, RegistryTree& tree) {
  return Parser(tree).Parse(text);
}

}  // namespace orvanto
