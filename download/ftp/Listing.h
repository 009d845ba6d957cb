// The text of a LIST reply.
#pragma once

#include <string>
#include <string_view>

#include "download/ftp/CFTPFiles.h"

namespace orvanto {

// Adds the entries of a listing in the style of Unix' ls or of DOS' dir. A Unix line that tells the
// time of day means `year`. Lines that tell no name, "." and ".." add nothing.
void ParseListing(std::string_view text, const std::string& directory, int year, CFTPFiles& files);

// An entry of a directory; an empty directory adds nothing to the name.
std::string JoinRemotePath(const std::string& directory, const std::string& name);

}  // namespace orvanto
