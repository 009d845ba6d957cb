#include "platform/posix/PosixFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/posix/Descriptor.h"
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

}  // namespace

bool PosixFiles::Exists(const std::string& path) const {
  struct stat status;
  return ::stat(ToNative(path).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

void PosixFiles::ListFolder(const std::string& folder, const EachEntry& each) {
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(ToNative(folder).c_str()),
                                                      ::closedir);
  if (!directory) return;
  std::string name;
  while (const dirent* entry = ::readdir(directory.get())) {
    name = entry->d_name;
    if (name == "." || name == ".." || name.find('\\') != std::string::npos) continue;
    if (!each(name, KindOf(::dirfd(directory.get()), *entry))) return;
  }
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

std::string PosixFiles::Remove(const std::string& path) {
  return ::unlink(ToNative(path).c_str()) == 0 ? "" : std::strerror(errno);
}

bool PosixFiles::Append(const std::string& path, const std::string& bytes) {
  const Descriptor file(
      ::open(ToNative(path).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  return file && WriteAll(file.Get(), bytes.data(), bytes.size());
}

}  // namespace orvanto::posix
