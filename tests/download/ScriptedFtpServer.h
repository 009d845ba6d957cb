// An FTP server that follows a script.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <functional>
#include <iterator>
#include <memory>
#include <string>

#include "tests/support/FakePlatform.h"

namespace orvanto {

// Serves the last client that was made.
struct ScriptedFtpServer {
  explicit ScriptedFtpServer(FakePlatform& clients)
      : platform(clients), server(clients.loop.NewTimer([this] { Serve(); })) {
    server->Start(std::chrono::milliseconds(10));
  }

  FakeSocketHost::Socket& Control() { return **std::next(platform.sockets.sockets.rbegin()); }
  FakeSocketHost::Socket& Data() { return *platform.sockets.sockets.back(); }

  // The steps stand between bars.
  void Says(const std::string& steps) {
    for (std::size_t begin = 0; begin < steps.size();) {
      const std::size_t bar = std::min(steps.find('|', begin), steps.size());
      script.push_back(steps.substr(begin, bar - begin));
      begin = bar + 1;
    }
  }

  // One step every ten milliseconds: "> x" waits until the client has sent x; "c" that it
  // connects; "x" closes the control connection; "+" connects, "D x" sends, "." closes, "!" breaks
  // the data connection. Any other step is a reply.
  void Serve() {
    ++ticks;
    if (each) each();
    if (script.empty() || platform.sockets.sockets.size() < 2) return;
    const std::string step = script.front();
    const bool heeds = step.starts_with("> ");
    const std::string line = step.substr(heeds ? 2 : 0) + "\r\n";
    if (heeds && Control().sent.size() < line.size()) return;
    if (step == "c" && Control().GetState() != TcpSocket::State::Connecting) return;
    script.pop_front();
    if (heeds) {
      EXPECT_EQ(Control().Sent(), line);
    } else if (step == "c") {
      Control().Connected();
    } else if (step == "x") {
      Control().PeerCloses();
    } else if (step == "+") {
      if (!Data().PeerConnects()) Data().Connected();
    } else if (step.starts_with("D ")) {
      Arrives(Data(), step.substr(2));
    } else if (step == ".") {
      Data().PeerCloses();
    } else if (step == "!") {
      Data().receiveError = 10054;
      Data().Receive();
    } else {
      for (std::size_t i = 0; i < line.size(); i += atOnce) {
        Arrives(Control(), line.substr(i, atOnce));
      }
    }
  }

  // Nothing does where nobody is connected.
  static void Arrives(FakeSocketHost::Socket& socket, const std::string& bytes) {
    if (socket.GetState() == TcpSocket::State::Connected) socket.PeerSends(bytes);
  }

  FakePlatform& platform;
  std::unique_ptr<Timer> server;
  std::deque<std::string> script;
  std::size_t atOnce = std::string::npos;  // bytes of a reply
  std::function<void()> each;              // time that the server looks
  int ticks = 0;
};

}  // namespace orvanto
