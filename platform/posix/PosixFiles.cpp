#include "platform/posix/PosixFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/posix/Descriptor.h"
#include "platform/posix/LocalTime.h"
#include "platform/posix/Paths.h"
#include "platform/text/Utf8.h"

namespace orvanto::posix {
namespace {

Files::EntryKind KindOf(int directory, const dirent& entry) {
  unsigned char type = entry.d_type;
  struct stat status;
  // Only what the listing leaves open costs a look: links, and all on a file system that says
  // nothing.
  if (type == DT_UNKNOWN && ::fstatat(directory, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
    type = static_cast<unsigned char>(IFTODT(status.st_mode));
  }
  if (type == DT_DIR) return Files::EntryKind::Folder;
  if (type == DT_LNK && ::fstatat(directory, entry.d_name, &status, 0) == 0 &&
      S_ISDIR(status.st_mode)) {
    return Files::EntryKind::FolderLink;
  }
  return entry.d_name[0] == '.' ? Files::EntryKind::Hidden : Files::EntryKind::File;
}

// Calls each(directory's descriptor, entry) until that returns false.
template <typename Each>
void Walk(const std::string& folder, Each&& each) {
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(ToNative(folder).c_str()),
                                                      ::closedir);
  if (!directory) return;
  while (const dirent* entry = ::readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name == "." || name == ".." || name.find('\\') != std::string_view::npos) continue;
    if (!each(::dirfd(directory.get()), *entry)) return;
  }
}

ErrorNumber Number(int error) {
  switch (error) {
    case ENOENT:
      return kFileNotFoundError;
    case ENOTDIR:
      return kPathNotFoundError;
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
      return kPermissionError;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return kDiskFullError;
    case EMFILE:
    case ENFILE:
      return kTooManyFilesError;
    case EISDIR:
    case ENXIO:
      return kPathAccessError;
    default:
      return kDeviceError;
  }
}

class PosixFile : public File {
 public:
  explicit PosixFile(Descriptor file) : file_(std::move(file)) {}

  ReadResult ReadAt(std::uint64_t offset, char* bytes, std::size_t size) override {
    ReadResult read{0, kNoError};
    while (read.count < size) {
      const ssize_t count = ::pread(file_.Get(), bytes + read.count, size - read.count,
                                    static_cast<off_t>(offset + read.count));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) read.error = Number(errno);
      if (count <= 0) break;
      read.count += static_cast<std::size_t>(count);
    }
    return read;
  }

  ErrorNumber WriteAt(std::uint64_t offset, std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t count =
          ::pwrite(file_.Get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return Number(errno);
      bytes.remove_prefix(static_cast<std::size_t>(count));
      offset += static_cast<std::uint64_t>(count);
    }
    return kNoError;
  }

  std::uint64_t Size() const override {
    struct stat status {};
    ::fstat(file_.Get(), &status);
    return static_cast<std::uint64_t>(status.st_size);
  }

  ErrorNumber Flush() override { return ::fsync(file_.Get()) == 0 ? kNoError : Number(errno); }

 private:
  const Descriptor file_;
};

}  // namespace

bool PosixFiles::Exists(const std::string& path) const {
  struct stat status;
  return ::stat(ToNative(path).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

void PosixFiles::ListFolder(const std::string& folder, const EachEntry& each) {
  Walk(folder, [&, name = std::string()](int directory, const dirent& entry) mutable {
    name = entry.d_name;
    return each(name, KindOf(directory, entry));
  });
}

void PosixFiles::ListDetails(const std::string& folder,
                             const std::function<bool(const Entry& entry)>& each) {
  Walk(folder, [&](int directory, const dirent& entry) {
    struct stat status {};
    // Of a link that leads nowhere, its own.
    if (::fstatat(directory, entry.d_name, &status, 0) != 0 &&
        ::fstatat(directory, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
      return true;  // gone meanwhile
    }
    const auto size = S_ISDIR(status.st_mode) ? 0 : static_cast<std::uint64_t>(status.st_size);
    return each({entry.d_name, KindOf(directory, entry), size, LocalTime(status.st_mtime)});
  });
}

std::optional<Files::Facts> PosixFiles::Look(const std::string& path) const {
  struct stat status;
  if (::lstat(ToNative(path).c_str(), &status) != 0) return std::nullopt;
  return Facts{S_ISLNK(status.st_mode), status.st_mtime};
}

std::vector<std::string> PosixFiles::Drives() const { return {FromNative("/")}; }

Files::Opened PosixFiles::Open(const std::string& path, Access access) {
  const int how = access == Access::Read ? O_RDONLY : O_RDWR | O_CREAT;
  const std::string native = ToNative(path);
  struct stat status {};
  // Without O_NONBLOCK the opening of a pipe would never return.
  Descriptor file(::open(native.c_str(), how | O_CLOEXEC | O_NONBLOCK, 0666));
  if (!file) {
    const int error = errno;
    const std::string folder = native.substr(0, native.rfind('/') + 1);
    const bool lost = !folder.empty() && ::stat(folder.c_str(), &status) != 0;
    return {nullptr, lost && error == ENOENT ? kPathNotFoundError : Number(error)};
  }
  ::fstat(file.Get(), &status);
  if (!S_ISREG(status.st_mode)) return {nullptr, kPathAccessError};
  return {std::make_unique<PosixFile>(std::move(file)), kNoError};
}

bool PosixFiles::Read(const std::string& path, std::string& contents) {
  // Without O_NONBLOCK the opening of a pipe would never return; a device may never end.
  const Descriptor file(::open(ToNative(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status;
  if (!file || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  contents.clear();
  std::array<char, 65536> buffer;
  for (;;) {
    const ssize_t count = ::read(file.Get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count == 0;
    contents.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

std::string PosixFiles::FromCodePage(const std::string& bytes) const {
  // What Windows-1252 has in place of the control characters from 0x80 on.
  constexpr std::array<char16_t, 32> kHigh{
      0x20AC, 0x81,   0x201A, 0x192,  0x201E, 0x2026, 0x2020, 0x2021, 0x2C6,  0x2030, 0x160,
      0x2039, 0x152,  0x8D,   0x17D,  0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x2DC,  0x2122, 0x161,  0x203A, 0x153,  0x9D,   0x17E,  0x178};
  std::string text;
  for (const char c : bytes) {
    char32_t character = static_cast<unsigned char>(c);
    if (character >= 0x80 && character < 0xA0) character = kHigh[character - 0x80];
    AppendUtf8(character, text);
  }
  return text;
}

std::string PosixFiles::Copy(const std::string& from, const std::string& to) {
  std::error_code error;
  std::filesystem::copy_file(ToNative(from), ToNative(to),
                             std::filesystem::copy_options::overwrite_existing, error);
  return error ? error.message() : "";
}

std::string PosixFiles::Replace(const std::string& from, const std::string& to) {
  return ::rename(ToNative(from).c_str(), ToNative(to).c_str()) == 0 ? "" : std::strerror(errno);
}

std::string PosixFiles::Remove(const std::string& path) {
  return ::unlink(ToNative(path).c_str()) == 0 ? "" : std::strerror(errno);
}

std::string PosixFiles::RemoveFolder(const std::string& path) {
  return ::rmdir(ToNative(path).c_str()) == 0 ? "" : std::strerror(errno);
}

bool PosixFiles::Append(const std::string& path, const std::string& bytes) {
  const Descriptor file(
      ::open(ToNative(path).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  return file && WriteAll(file.Get(), bytes.data(), bytes.size());
}

}  // namespace orvanto::posix
