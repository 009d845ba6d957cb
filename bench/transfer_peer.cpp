// The other end of a transfer: `transfer_peer sink PORT` takes what comes and prints how much that
// was for each connection that sent anything; `transfer_peer source PORT FILE` sends the file to
// who connects.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

int Listen(int port) {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  const int on = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) std::exit(1);
  listen(fd, 512);
  return fd;
}

void Drain(int fd) {
  std::vector<char> buffer(256 << 10);
  std::uint64_t taken = 0;
  ssize_t count = 0;
  while ((count = recv(fd, buffer.data(), buffer.size(), 0)) > 0) {
    taken += static_cast<std::uint64_t>(count);
  }
  close(fd);
  if (taken > 0) std::cout << std::to_string(taken) + "\n" << std::flush;
}

void Give(int fd, const char* path) {
  const int file = open(path, O_RDONLY);
  while (sendfile(fd, file, nullptr, 1 << 20) > 0) {
  }
  close(file);
  close(fd);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  std::signal(SIGPIPE, SIG_IGN);
  const bool source = std::string(argv[1]) == "source";
  const int listener = Listen(std::atoi(argv[2]));
  for (;;) {
    const int fd = accept(listener, nullptr, nullptr);
    if (fd < 0) return 1;
    std::thread(source ? std::thread([=] { Give(fd, argv[3]); }) : std::thread(Drain, fd)).detach();
  }
}
