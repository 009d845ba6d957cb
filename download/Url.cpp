#include "download/Url.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "platform/text/Case.h"
#include "platform/text/DeviceName.h"
#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

constexpr std::string_view kAfterScheme = "://";
constexpr std::string_view kNotStored = "\\/:*?\"<>|";

// Of "beginning:rest", or all of it.
std::string BeforeColon(const std::string& text) { return text.substr(0, text.find(':')); }

std::string WithoutScheme(const std::string& url) {
  const std::size_t at = url.find(kAfterScheme);
  return at == std::string::npos ? url : url.substr(at + kAfterScheme.size());
}

// What belongs to the program and is not for others to write: a library, too, would be loaded with
// it. In small letters.
bool IsOurs(std::string_view name) {
  for (const char* const own :
       {"orvtask.log", "orvscrpt.log", "orvanto", "orvanto.lock", "scripts"}) {
    if (name == own) return true;
  }
  return name.starts_with("registry.txt") || name.starts_with("orvanto.exe") ||
         name.ends_with(".dll");
}

}  // namespace

void ParseUrl(const std::string& url, DownloadState& state) {
  const std::string rest = WithoutScheme(url);
  const std::size_t slash = rest.find('/');
  if (slash == std::string::npos) return;
  state.UrlFileName = BeforeColon(rest.substr(rest.rfind('/') + 1));
  if (!state.UseProxy) state.ConnectHost = rest.substr(0, slash);
}

Scheme SchemeOf(const std::string& url) {
  const std::string lower = LowerCase(url);
  if (lower.starts_with("http://")) return Scheme::Http;
  return lower.starts_with("ftp://") ? Scheme::Ftp : Scheme::None;
}

FtpAddress ParseFtpUrl(const std::string& url) {
  const std::string rest = WithoutScheme(url);
  const std::size_t slash = std::min(rest.find('/'), rest.size());
  std::string host = rest.substr(0, slash);
  FtpAddress address;
  if (const std::size_t at = host.rfind('@'); at != std::string::npos) {
    const std::string login = host.substr(0, at);
    address.user = BeforeColon(login);
    address.password = login.substr(std::min(address.user.size() + 1, login.size()));
    host.erase(0, at + 1);
  }
  address.host = BeforeColon(host);
  if (address.host.size() < host.size()) {
    std::uint16_t port = 0;
    std::from_chars(host.data() + address.host.size() + 1, host.data() + host.size(), port);
    if (port > 0) address.port = port;
  }
  const std::string path = rest.substr(std::min(slash + 1, rest.size()));
  const std::size_t last = path.rfind('/');
  if (last != std::string::npos) address.directory = path.substr(0, std::max<std::size_t>(last, 1));
  address.file = path.substr(last + 1);
  return address;
}

std::string ResolveUrl(const std::string& base, const std::string& reference) {
  const std::string host = base.substr(0, base.find('/', base.find("//") + 2));
  const std::string page = base.substr(0, base.find_first_of("?#"));
  if (reference.starts_with("//")) return ResolveUrl(base, "http:" + reference);
  if (reference.starts_with('/')) return host + reference;
  if (reference.empty() || reference[0] == '#') return base;
  if (reference[0] == '?') return page + reference;
  const std::size_t colon = reference.find(':');
  if (colon >= reference.find_first_of("/?#"))
    return page.substr(0, page.rfind('/') + 1) + reference;
  // Of a host alone, its root.
  const std::size_t path = reference.find_first_of("/?#", colon + 3);
  if (path != std::string::npos && reference[path] == '/') return reference;
  return std::string(reference).insert(std::min(path, reference.size()), "/");
}

bool HasControls(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; });
}

std::string WithoutLogin(const std::string& url) {
  const std::size_t host = url.size() - WithoutScheme(url).size();
  const std::size_t at = url.substr(0, url.find('/', host)).rfind('@');
  return at == std::string::npos || at < host ? url : url.substr(0, host) + url.substr(at + 1);
}

std::string LocalFileName(const std::string& name) {
  std::string stored;
  for (std::size_t at = 0; at < name.size();) {
    char32_t character = 0;
    const std::size_t length = DecodeUtf8(name, at, character);
    const bool bad = length == 0 || character < ' ' || character == 0x7F ||
                     kNotStored.find(name[at]) != std::string_view::npos;
    stored += bad ? "_" : name.substr(at, length);
    at += std::max<std::size_t>(length, 1);
  }
  // Windows drops what these end in.
  for (std::size_t at = stored.size();
       at > 0 && (stored[at - 1] == '.' || stored[at - 1] == ' ');) {
    stored[--at] = '_';
  }
  const std::string lower = LowerCase(stored);
  return IsDeviceName(lower) || IsOurs(lower) ? "" : stored;
}

}  // namespace orvanto
