// The registry as a text that a person can read and mend:
//
//   Orvanto registry 1
//   # a comment; so is a line that begins with a semicolon
//   [HKEY_CURRENT_USER\Software\Example]
//   "Name"="text"
//   "Count"=dword:0000000a
//   "Bytes"=hex:01,ff
//   # end of registry
//
// In texts and value names \\ \" \r \n \t and \xNN stand for a character or byte, in key names %NN
// for a byte. hex(N): gives bytes of the value type N. Lines may end in CR LF and be indented; of
// two values of one name the later counts. The last line shows that the text is whole.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/registry/RegistryTree.h"

namespace orvanto {

std::string FormatRegistry(const RegistryTree& tree);

// What is wrong with a text, in words for the person who mends it.
struct RegistryTextError {
  int line = 0;  // from 1
  std::string reason;
};

// Fills `tree`, which must be fresh. On an error the tree holds what stood before it.
std::optional<RegistryTextError> ParseRegistry(std::string_view text, RegistryTree& tree);

}  // namespace orvanto
