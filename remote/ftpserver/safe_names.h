// Names of files as clients send them.
#pragma once

#include <string>
#include <string_view>

namespace orvanto {

class Files;

// "/a", "./a" and "//a" are "a": the client's root is the folder that it works in.
std::string_view NameInRoot(std::string_view name);

// Whether a name, which may have folders with either slash between them, stands for something in
// the folder (which ends in a backslash) on every system: it does not go up, is no device, has
// nothing that a system would cut off or take for more than a name, and no part of it is a link.
bool StaysInside(const Files& files, const std::string& folder, const std::string& name);

}  // namespace orvanto
