// A file that is open.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/text/Error.h"

namespace orvanto {

// Reads and writes anywhere in it; nobody else's position matters. Destroying it closes it. Others
// may read, write and delete the file meanwhile.
class File {
 public:
  struct ReadResult {
    std::size_t count;  // less than asked for: the file ends there, or the error
    ErrorNumber error;
  };

  virtual ~File() = default;

  // `offset` counts from 0 and may lie beyond the end.
  virtual ReadResult ReadAt(std::uint64_t offset, char* bytes, std::size_t size) = 0;

  // All of the bytes, or an error; then some of them may have been written. The file grows as it
  // must, with zeros where nothing was written.
  virtual ErrorNumber WriteAt(std::uint64_t offset, std::string_view bytes) = 0;

  virtual std::uint64_t Size() const = 0;

  // Returns when what was written will outlast a loss of power.
  virtual ErrorNumber Flush() = 0;
};

}  // namespace orvanto
