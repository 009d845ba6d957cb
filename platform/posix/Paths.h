// Windows paths and those of this system. The root directory shows as "Z:\".
#pragma once

#include <string>

namespace orvanto::posix {

// "Z:\a\b" becomes "/a/b"; backslashes become slashes in every path, relative ones stay relative.
// Of a drive other than Z: nothing is known, it becomes a directory of that name ("C:/dir"). A path
// that does not exist as it is written is looked up without regard to case, below the directory
// that is spelt as written where there is one; a link that leads nowhere exists as it is written
// only. When the whole does not exist, the part of it that does is taken, and the rest keeps the
// case of its writing.
std::string ToNative(const std::string& path);

// "/a/b" becomes "Z:\a\b"; relative paths stay relative.
std::string FromNative(const std::string& path);

}  // namespace orvanto::posix
