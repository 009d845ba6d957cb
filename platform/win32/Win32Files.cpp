#include "platform/win32/Win32Files.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <utility>

#include "platform/win32/Handle.h"
#include "platform/win32/Text.h"

namespace orvanto::win32 {

namespace {

using FileHandle = Handle<HANDLE, CloseHandle, -1>;
using FindHandle = Handle<HANDLE, FindClose, -1>;

// The form of a path that no length limit applies to, and that is not looked at for device names
// and dots at its end. Such a path stays as it is.
std::wstring VerbatimPath(const std::wstring& path) {
  if (path.starts_with(L"\\\\?\\")) return path;
  const DWORD room = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(room, L'\0');
  full.resize(GetFullPathNameW(path.c_str(), room, full.data(), nullptr));
  if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
  return L"\\\\?\\" + full;
}

// Verbatim when it is long. Short ones stay as they are, so that device names and relative paths
// keep their meaning.
std::wstring SystemPath(const std::string& path) {
  std::wstring wide = ToWide(path);
  const bool fits = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr) < MAX_PATH - 12;
  return fits ? wide : VerbatimPath(wide);
}

// Of the last failure, in the user's language, on one line.
std::string Reason() {
  const DWORD code = GetLastError();
  constexpr DWORD kFlags =
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
  wchar_t text[512];
  const DWORD length =
      FormatMessageW(kFlags, nullptr, code, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
  std::string reason = ToUtf8({text, length});
  reason.resize(reason.find_last_not_of(" \r\n") + 1);
  return reason.empty() ? "error " + std::to_string(code) : reason;
}

// What a cloud service keeps is a reparse point too, but stands for itself. Wine does not tell the
// tag: all of its reparse points are links.
bool IsLink(const WIN32_FIND_DATAW& entry) {
  return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (entry.dwReserved0 == 0 || IsReparseTagNameSurrogate(entry.dwReserved0));
}

// In seconds since 1970.
std::int64_t UnixTime(const FILETIME& moment) {
  constexpr std::int64_t kTicks = 10'000'000;
  constexpr std::int64_t kFrom1601 = 11'644'473'600;
  const auto ticks = std::int64_t{moment.dwHighDateTime} << 32 | moment.dwLowDateTime;
  return ticks / kTicks - kFrom1601;
}

Files::EntryKind KindOf(const WIN32_FIND_DATAW& entry) {
  const DWORD attributes = entry.dwFileAttributes;
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
    return IsLink(entry) ? Files::EntryKind::FolderLink : Files::EntryKind::Folder;
  }
  return attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM) ? Files::EntryKind::Hidden
                                                                      : Files::EntryKind::File;
}

ErrorNumber Number(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
      return kFileNotFoundError;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
      return kPathNotFoundError;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT:
      return kPermissionError;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case ERROR_FILE_TOO_LARGE:
      return kDiskFullError;
    case ERROR_TOO_MANY_OPEN_FILES:
      return kTooManyFilesError;
    default:
      return kDeviceError;
  }
}

// Of one call.
DWORD Piece(std::size_t size) { return static_cast<DWORD>(std::min<std::size_t>(size, 1 << 30)); }

class Win32File : public File {
 public:
  explicit Win32File(FileHandle file) : file_(std::move(file)) {}

  ReadResult ReadAt(std::uint64_t offset, char* bytes, std::size_t size) override {
    ReadResult read{0, kNoError};
    while (read.count < size) {
      DWORD count = 0;
      if (!MoveTo(offset + read.count) ||
          !ReadFile(file_.Get(), bytes + read.count, Piece(size - read.count), &count, nullptr)) {
        read.error = Failed();
        break;
      }
      if (count == 0) break;
      read.count += count;
      position_ += count;
    }
    return read;
  }

  ErrorNumber WriteAt(std::uint64_t offset, std::string_view bytes) override {
    while (!bytes.empty()) {
      DWORD count = 0;
      if (!MoveTo(offset) ||
          !WriteFile(file_.Get(), bytes.data(), Piece(bytes.size()), &count, nullptr)) {
        return Failed();
      }
      if (count == 0) return kDiskFullError;
      bytes.remove_prefix(count);
      offset += count;
      position_ = offset;
    }
    return kNoError;
  }

  std::uint64_t Size() const override {
    LARGE_INTEGER size = {};
    GetFileSizeEx(file_.Get(), &size);
    return static_cast<std::uint64_t>(size.QuadPart);
  }

  ErrorNumber Flush() override {
    return FlushFileBuffers(file_.Get()) ? kNoError : Number(GetLastError());
  }

 private:
  // Who goes on where he was needs no call for it.
  bool MoveTo(std::uint64_t offset) {
    if (offset == position_) return true;
    LARGE_INTEGER place = {};
    place.QuadPart = static_cast<LONGLONG>(offset);
    if (!SetFilePointerEx(file_.Get(), place, nullptr, FILE_BEGIN)) return false;
    position_ = offset;
    return true;
  }

  ErrorNumber Failed() {
    position_ = kUnknown;
    return Number(GetLastError());
  }

  static constexpr std::uint64_t kUnknown = ~std::uint64_t{0};
  const FileHandle file_;
  std::uint64_t position_ = 0;
};

DateTime LocalTime(const FILETIME& moment) {
  SYSTEMTIME utc{};
  SYSTEMTIME local{};
  FileTimeToSystemTime(&moment, &utc);
  if (!SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) local = utc;
  return {local.wYear,   local.wMonth,  local.wDay,          local.wHour,
          local.wMinute, local.wSecond, local.wDayOfWeek + 1};
}

// Calls each(entry) until that returns false.
template <typename Each>
void Walk(const std::string& folder, Each&& each) {
  if (folder.empty()) return;  // would be the root
  const std::wstring pattern = SystemPath(folder.ends_with('\\') ? folder + "*" : folder + "\\*");
  WIN32_FIND_DATAW entry;
  const FindHandle find(FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry,
                                         FindExSearchNameMatch, nullptr,
                                         FIND_FIRST_EX_LARGE_FETCH));
  if (!find) return;
  do {
    const wchar_t* name = entry.cFileName;
    if (std::wcscmp(name, L".") == 0 || std::wcscmp(name, L"..") == 0) continue;
    if (!each(entry)) return;
  } while (FindNextFileW(find.Get(), &entry));
}

}  // namespace

bool Win32Files::Exists(const std::string& path) const {
  // Asked of the folder: the file itself answers to a dot at its end, to its short name and, as a
  // device, to names that no folder lists.
  const std::size_t begin = path.rfind('\\') + 1;
  const std::wstring name = ToWide(path.substr(begin));
  const std::wstring folder = VerbatimPath(begin == 0 ? L".\\" : ToWide(path.substr(0, begin)));
  WIN32_FIND_DATAW entry;
  const FindHandle find(FindFirstFileExW((folder + name).c_str(), FindExInfoBasic, &entry,
                                         FindExSearchNameMatch, nullptr, 0));
  return find && (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 &&
         CompareStringOrdinal(entry.cFileName, -1, name.c_str(), static_cast<int>(name.size()),
                              TRUE) == CSTR_EQUAL;
}

void Win32Files::ListFolder(const std::string& folder, const EachEntry& each) {
  Walk(folder,
       [&](const WIN32_FIND_DATAW& entry) { return each(ToUtf8(entry.cFileName), KindOf(entry)); });
}

void Win32Files::ListDetails(const std::string& folder,
                             const std::function<bool(const Entry& entry)>& each) {
  Walk(folder, [&](const WIN32_FIND_DATAW& entry) {
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const std::uint64_t size = std::uint64_t{entry.nFileSizeHigh} << 32 | entry.nFileSizeLow;
    return each({ToUtf8(entry.cFileName), KindOf(entry), isFolder ? 0 : size,
                 LocalTime(entry.ftLastWriteTime)});
  });
}

std::optional<Files::Facts> Win32Files::Look(const std::string& path) const {
  WIN32_FIND_DATAW entry;
  const FindHandle find(FindFirstFileExW(VerbatimPath(ToWide(path)).c_str(), FindExInfoBasic,
                                         &entry, FindExSearchNameMatch, nullptr, 0));
  if (!find) return std::nullopt;
  return Facts{IsLink(entry), UnixTime(entry.ftLastWriteTime)};
}

std::vector<std::string> Win32Files::Drives() const {
  std::vector<std::string> drives;
  const DWORD present = GetLogicalDrives();
  for (char letter = 'A'; letter <= 'Z'; ++letter) {
    if (present >> (letter - 'A') & 1) drives.push_back(std::string(1, letter) + ":\\");
  }
  return drives;
}

Files::Opened Win32Files::Open(const std::string& path, Access access) {
  const bool write = access == Access::Write;
  const std::wstring name = SystemPath(path);
  FileHandle file(CreateFileW(name.c_str(), write ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              write ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) {
    const DWORD error = GetLastError();
    const DWORD found = GetFileAttributesW(name.c_str());
    const bool folder = found != INVALID_FILE_ATTRIBUTES && (found & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return {nullptr, folder ? kPathAccessError : Number(error)};
  }
  if (GetFileType(file.Get()) != FILE_TYPE_DISK) return {nullptr, kPathAccessError};
  return {std::make_unique<Win32File>(std::move(file)), kNoError};
}

bool Win32Files::Read(const std::string& path, std::string& contents) {
  contents.clear();
  // Who else has it open, for writing or to delete it, is not disturbed.
  const FileHandle file(CreateFileW(SystemPath(path).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!file) return false;
  LARGE_INTEGER size = {};
  if (GetFileSizeEx(file.Get(), &size)) contents.reserve(static_cast<std::size_t>(size.QuadPart));
  // The size is a hint only: a file may grow meanwhile, and a device has none.
  constexpr DWORD kStep = 1 << 16;
  for (;;) {
    const std::size_t had = contents.size();
    contents.resize(had + kStep);
    DWORD got = 0;
    const bool done = !ReadFile(file.Get(), contents.data() + had, kStep, &got, nullptr);
    contents.resize(had + got);
    if (done) return false;
    if (got == 0) return true;
  }
}

std::string Win32Files::FromCodePage(const std::string& bytes) const {
  // Where the system is set to UTF-8, what is no UTF-8 comes from times before that.
  constexpr UINT kWestern = 1252;
  const UINT codePage = GetACP() == CP_UTF8 ? kWestern : CP_ACP;
  const int size = static_cast<int>(bytes.size());
  const int length = MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(codePage, 0, bytes.data(), size, wide.data(), length);
  return ToUtf8(wide);
}

std::string Win32Files::Copy(const std::string& from, const std::string& to) {
  return CopyFileW(SystemPath(from).c_str(), SystemPath(to).c_str(), FALSE) ? "" : Reason();
}

std::string Win32Files::Replace(const std::string& from, const std::string& to) {
  return MoveFileExW(SystemPath(from).c_str(), SystemPath(to).c_str(), MOVEFILE_REPLACE_EXISTING)
             ? ""
             : Reason();
}

std::string Win32Files::Remove(const std::string& path) {
  return DeleteFileW(SystemPath(path).c_str()) ? "" : Reason();
}

std::string Win32Files::RemoveFolder(const std::string& path) {
  return RemoveDirectoryW(SystemPath(path).c_str()) ? "" : Reason();
}

bool Win32Files::Append(const std::string& path, const std::string& bytes) {
  const FileHandle file(CreateFileW(SystemPath(path).c_str(), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return false;
  DWORD written = 0;
  return WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
         written == bytes.size();
}

}  // namespace orvanto::win32
