#include "platform/posix/PosixFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/posix/Descriptor.h"
#include "platform/posix/Paths.h"

namespace orvanto::posix {

bool PosixFiles::Exists(const std::string& path) const {
  struct stat status;
  return ::stat(ToNative(path).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool PosixFiles::Append(const std::string& path, const std::string& bytes) {
  const Descriptor file(
      ::open(ToNative(path).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  return file && WriteAll(file.Get(), bytes.data(), bytes.size());
}

}  // namespace orvanto::posix
