// What an FTP server lists.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "download/ftp/Listing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvanto::CFTPFiles files;
  orvanto::ParseListing({reinterpret_cast<const char*>(data), size}, "/d", 2026, files);
  for (const orvanto::CFTPFile& file : files) {
    const auto& time = file.LastWriteTime;
    const bool never = time.year == 0 && time.month == 0 && time.weekday == 0;
    const bool valid = time.month >= 1 && time.month <= 12 && time.weekday >= 1 &&
                       time.weekday <= 7 && time.hour < 24 && time.minute < 60;
    if (file.Filename.empty() || file.FileSize < 0 || !(never || valid)) std::abort();
  }
  return 0;
}
