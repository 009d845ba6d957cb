#include "platform/text/Case.h"

#include <algorithm>
#include <array>

#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

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

}  // namespace

void AppendFoldedCase(std::string_view text, std::string& out) {
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

std::string FoldCase(std::string_view text) {
  std::string folded;
  folded.reserve(text.size());
  AppendFoldedCase(text, folded);
  return folded;
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), LowerAscii);
  return lower;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return LowerAscii(x) == LowerAscii(y); });
}

}  // namespace orvanto
