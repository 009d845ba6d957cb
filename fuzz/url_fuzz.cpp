// Addresses of files, from scripts, the clipboard and whoever drops them.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "download/Url.h"
#include "platform/text/Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvanto;
  const std::string url(reinterpret_cast<const char*>(data), size);
  DownloadState state;
  ParseUrl(url, state);
  const std::string name = LocalFileName(state.UrlFileName);
  if (name.find_first_of("\\/:*?\"<>|") != std::string::npos) std::abort();
  if (!IsUtf8(name) || name.ends_with('.') || name.ends_with(' ')) std::abort();
  for (const char c : name) {
    if (static_cast<unsigned char>(c) < ' ') std::abort();
  }
  const FtpAddress address = ParseFtpUrl(url);
  if (address.port == 0 || address.file.find('/') != std::string::npos) std::abort();
  if (address.host.find('@') != std::string::npos) std::abort();
  return 0;
}
