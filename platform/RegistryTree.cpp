#include "platform/RegistryTree.h"

#include <array>
#include <utility>

#include "platform/Utf8.h"

namespace orvanto {
namespace {

constexpr std::size_t kMaxComponent = 255;

// A run of capitals and how far off their small letters are. With `step` 2 every second code point
// from `first` is a capital and the small letter follows it.
struct CaseRange {
  unsigned first;
  unsigned last;
  unsigned step;
  int offset;
};

constexpr std::array kCaseRanges = {
    CaseRange{0x00C0, 0x00D6, 1, 32},   CaseRange{0x00D8, 0x00DE, 1, 32},
    CaseRange{0x0100, 0x012E, 2, 1},    CaseRange{0x0132, 0x0136, 2, 1},
    CaseRange{0x0139, 0x0147, 2, 1},    CaseRange{0x014A, 0x0176, 2, 1},
    CaseRange{0x0178, 0x0178, 1, -121}, CaseRange{0x0179, 0x017D, 2, 1},
    CaseRange{0x01CD, 0x01DB, 2, 1},    CaseRange{0x01DE, 0x01EE, 2, 1},
    CaseRange{0x01F8, 0x021E, 2, 1},    CaseRange{0x0222, 0x0232, 2, 1},
    CaseRange{0x0386, 0x0386, 1, 38},   CaseRange{0x0388, 0x038A, 1, 37},
    CaseRange{0x038C, 0x038C, 1, 64},   CaseRange{0x038E, 0x038F, 1, 63},
    CaseRange{0x0391, 0x03A1, 1, 32},   CaseRange{0x03A3, 0x03AB, 1, 32},
    CaseRange{0x0400, 0x040F, 1, 80},   CaseRange{0x0410, 0x042F, 1, 32},
    CaseRange{0x0460, 0x0480, 2, 1},    CaseRange{0x048A, 0x04BE, 2, 1},
    CaseRange{0x04C0, 0x04C0, 1, 15},   CaseRange{0x04C1, 0x04CD, 2, 1},
    CaseRange{0x04D0, 0x052E, 2, 1},
};

unsigned LowerCodePoint(unsigned codePoint) {
  for (const CaseRange& range : kCaseRanges) {
    if (codePoint < range.first) break;
    if (codePoint > range.last || (codePoint - range.first) % range.step != 0) continue;
    return static_cast<unsigned>(static_cast<int>(codePoint) + range.offset);
  }
  return codePoint;
}

// Strips the trailing backslash and checks each component.
Status CheckPath(std::string_view& path) {
  if (path.size() > 1 && path.back() == '\\') path.remove_suffix(1);
  if (path.empty()) return kSuccess;
  for (std::string_view rest = path;;) {
    const std::size_t end = rest.find('\\');
    const std::string_view component = rest.substr(0, end);
    if (component.empty()) return kBadPathname;
    if (component.size() > kMaxComponent && Utf16Length(component) > kMaxComponent) {
      return kInvalidParameter;
    }
    if (end == std::string_view::npos) return kSuccess;
    rest.remove_prefix(end + 1);
  }
}

void AppendFolded(std::string& out, std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte >= 'A' && byte <= 'Z') {
      out += static_cast<char>(byte + ('a' - 'A'));
    } else if (byte >= 0xC2 && byte <= 0xDF && i + 1 < text.size() && IsContinuation(text[i + 1])) {
      // All pairs lie within the two-byte forms.
      const auto next = static_cast<unsigned char>(text[++i]);
      const unsigned lower = LowerCodePoint((byte & 0x1Fu) << 6 | (next & 0x3Fu));
      out += static_cast<char>(0xC0u | lower >> 6);
      out += static_cast<char>(0x80u | (lower & 0x3Fu));
    } else {
      out += text[i];
    }
  }
}

std::string RootId(RootKey root) { return std::string(1, static_cast<char>('0' + int(root))); }

}  // namespace

RegistryTree::RegistryTree() {
  for (int i = 0; i <= static_cast<int>(RootKey::DynData); ++i) {
    const auto root = static_cast<RootKey>(i);
    nodes_[RootId(root)].root = root;
  }
}

std::string RegistryTree::Fold(std::string_view text) {
  std::string folded;
  folded.reserve(text.size());
  AppendFolded(folded, text);
  return folded;
}

Status RegistryTree::IdOf(RootKey root, std::string_view path, std::string& id) {
  return IdBelow(RootId(root), path, id);
}

Status RegistryTree::IdBelow(std::string_view parentId, std::string_view path, std::string& id) {
  if (const Status status = CheckPath(path); status != kSuccess) return status;
  std::string result;
  result.reserve(parentId.size() + 1 + path.size());
  result += parentId;
  if (!path.empty()) {
    result += '\\';
    AppendFolded(result, path);
  }
  id = std::move(result);
  return kSuccess;
}

const RegistryTree::Node* RegistryTree::Find(std::string_view id) const {
  const auto found = nodes_.find(id);
  return found == nodes_.end() ? nullptr : &found->second;
}

const RegistryTree::Value* RegistryTree::FindValue(std::string_view id,
                                                   std::string_view name) const {
  const Node* node = Find(id);
  if (node == nullptr) return nullptr;
  const auto found = node->values.find(Fold(name));
  return found == node->values.end() ? nullptr : &found->second;
}

Status RegistryTree::CreateKey(RootKey root, std::string_view path) {
  if (const Status status = CheckPath(path); status != kSuccess) return status;
  std::string id = RootId(root);
  std::string written;  // the path so far, as the keys on it are written
  while (!path.empty()) {
    const std::size_t end = path.find('\\');
    const std::string_view component = path.substr(0, end);
    path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
    id += '\\';
    AppendFolded(id, component);
    const auto [node, made] = nodes_.try_emplace(id);
    if (made) {
      if (!written.empty()) written += '\\';
      written += component;
      node->second.root = root;
      node->second.path = written;
      ++revision_;
    } else {
      written = node->second.path;
    }
  }
  return kSuccess;
}

Status RegistryTree::DeleteKey(const std::string& id) {
  const auto found = nodes_.find(id);
  if (found == nodes_.end()) return kFileNotFound;
  if (found->second.path.empty()) return kAccessDenied;
  const std::string below = id + '\\';
  const auto next = nodes_.lower_bound(below);
  if (next != nodes_.end() && next->first.starts_with(below)) return kAccessDenied;
  nodes_.erase(found);
  ++revision_;
  return kSuccess;
}

Status RegistryTree::SetValue(std::string_view id, std::string_view name, ValueType type,
                              std::string data) {
  const auto found = nodes_.find(id);
  if (found == nodes_.end()) return kKeyDeleted;
  const auto [entry, made] = found->second.values.try_emplace(Fold(name));
  Value& value = entry->second;
  if (made) value.name = name;
  if (!made && value.type == type && value.data == data) return kSuccess;
  value.type = type;
  value.data = std::move(data);
  ++revision_;
  return kSuccess;
}

Status RegistryTree::DeleteValue(std::string_view id, std::string_view name) {
  const auto found = nodes_.find(id);
  if (found == nodes_.end()) return kKeyDeleted;
  if (found->second.values.erase(Fold(name)) == 0) return kFileNotFound;
  ++revision_;
  return kSuccess;
}

}  // namespace orvanto
