#include "remote/ftpserver/safe_names.h"

#include <algorithm>

#include "platform/Files.h"
#include "platform/text/DeviceName.h"

namespace orvanto {
namespace {

constexpr std::string_view kSlashes = "\\/";
constexpr std::string_view kBreaking = "<>:\"|?*";

// ".." ends in a point, too.
bool IsPlain(std::string_view part) {
  const auto breaks = [](char c) {
    return static_cast<unsigned char>(c) < ' ' || kBreaking.find(c) != std::string_view::npos;
  };
  return !part.empty() && !part.ends_with('.') && !part.ends_with(' ') && !IsDeviceName(part) &&
         std::none_of(part.begin(), part.end(), breaks);
}

}  // namespace

std::string_view NameInRoot(std::string_view name) {
  while (name.starts_with('/') || name.starts_with("./")) {
    name.remove_prefix(name.starts_with('/') ? 1 : 2);
  }
  return name;
}

bool StaysInside(const Files& files, const std::string& folder, const std::string& name) {
  for (std::size_t begin = 0, end = 0; end < name.size() || begin == 0; begin = end + 1) {
    end = std::min(name.find_first_of(kSlashes, begin), name.size());
    if (!IsPlain(std::string_view(name).substr(begin, end - begin))) return false;
    const auto facts = files.Look(folder + name.substr(0, end));
    if (facts && facts->isLink) return false;
  }
  return true;
}

}  // namespace orvanto
