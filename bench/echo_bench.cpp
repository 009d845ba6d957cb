// One byte there and back: `echo_bench client PORT SECONDS` prints round trips a second;
// `echo_bench server PORT` is the smallest server that polls and echoes, as the limit.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

void NoDelay(int fd) {
  const int on = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

int Serve(int port) {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  const int on = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  const sockaddr_in address = Loopback(port);
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return 1;
  listen(listener, 1);
  for (;;) {
    const int client = accept(listener, nullptr, nullptr);
    NoDelay(client);
    char buffer[4096];
    for (;;) {
      pollfd ready{client, POLLIN, 0};
      poll(&ready, 1, -1);
      const ssize_t count = recv(client, buffer, sizeof buffer, 0);
      if (count <= 0 || send(client, buffer, static_cast<std::size_t>(count), MSG_NOSIGNAL) < 0) {
        break;
      }
    }
    close(client);
  }
}

int Measure(int port, double seconds) {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in address = Loopback(port);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return 1;
  NoDelay(fd);
  // What the server has to say first.
  pollfd ready{fd, POLLIN, 0};
  char buffer[65536];
  while (poll(&ready, 1, 300) > 0 && recv(fd, buffer, sizeof buffer, 0) > 0) {
  }
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  const auto end = begin + std::chrono::duration<double>(seconds);
  long trips = 0;
  while (Clock::now() < end) {
    if (send(fd, "x", 1, 0) != 1 || recv(fd, buffer, 1, 0) != 1) return 1;
    ++trips;
  }
  std::cout << static_cast<double>(trips) /
                   std::chrono::duration<double>(Clock::now() - begin).count()
            << std::endl;
  close(fd);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc >= 3 && std::string(argv[1]) == "server") return Serve(std::atoi(argv[2]));
  if (argc >= 4) return Measure(std::atoi(argv[2]), std::atof(argv[3]));
  return 2;
}
