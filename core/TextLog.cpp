#include "core/TextLog.h"

#include "platform/text/Lines.h"

namespace orvanto {

std::string AppendToLog(const std::string& log, const std::string& text) {
  std::string all = log + text;
  if (all.size() > kMostLogged) {
    const std::size_t line = all.find(kCrLf, all.size() - kMostLogged);
    all.erase(0, line == std::string::npos ? all.size() - kMostLogged : line);
  }
  if (all.starts_with(kCrLf)) all.erase(0, 2);
  return all;
}

}  // namespace orvanto
