#include "remote/Access.h"

namespace orvanto {

bool SamePassword(std::string_view given, std::string_view password) {
  std::size_t differences = given.size() ^ password.size();
  for (std::size_t i = 0; i < given.size(); ++i) {
    const char other = password.empty() ? '\0' : password[i % password.size()];
    differences |= static_cast<unsigned char>(given[i] ^ other);
  }
  return differences == 0;
}

bool HasPassword(const RemoteSettings& remote) {
  return remote.passwordRequired && !remote.password.empty();
}

bool IsFromThisComputer(const TcpSocket& socket) {
  const std::string address = socket.RemoteAddress();
  return address.starts_with("127.") || address == socket.BoundAddress();
}

std::string ListeningAddress(const RemoteSettings& remote) {
  return remote.strict && !remote.bindAddress.empty() ? remote.bindAddress
                                                      : TcpSocket::kAllAddresses;
}

}  // namespace orvanto
