// The remote control on a platform of fakes, and a client that types.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/text/Lines.h"
#include "remote/Internet.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {

class FakeArea : public ServerArea {
 public:
  void ShowServer(bool on) override { shown_ = on ? "shown " : "hidden "; }
  void SetCaption(const std::string& text) override { caption_ = text + " "; }
  void SetLamps(bool yes, bool no) override {
    lamps_ = std::string(yes ? "Y" : "-") + (no ? "N " : "- ");
  }
  void SetClient(const std::string& address) override { client_ = address; }
  void EnableClientCommands(bool on) override { commands_ = on ? " commands" : ""; }
  std::string Text() const { return shown_ + caption_ + lamps_ + client_ + commands_; }

 private:
  std::string shown_, caption_, lamps_, client_, commands_;
};

struct RemoteDesk : CoreDesk {
  RemoteSettings remote;
  FakeArea area;
  frmChat chat{forms};
  TelnetServer server{
      {loop, sockets, settings, store, execution, clock, files, messageBoxes, area, chat}, remote};
  FakeSocketHost::Socket& socket = *sockets.sockets.front();

  const std::string& Log() { return server.ServerLog().Text(); }
  // Switches the server on and connects; what the client is sent at first.
  std::string Connect() {
    if (!server.Connected() && !server.Listening()) server.ServerOn();
    socket.Sent();
    EXPECT_TRUE(socket.PeerConnects());
    return socket.Sent();
  }
  // One arrival; what the client is sent.
  std::string Send(const std::string& chunk) {
    socket.Sent();
    socket.PeerSends(chunk);
    return socket.Sent();
  }
  // Types key by key and Enter; what the client is sent after the echo of the keys.
  std::string Line(const std::string& text) {
    for (const char key : text) Send(std::string(1, key));
    return Send(kCrLf);
  }
  // Lines with '|' between them; what the last one brings.
  std::string Lines(const std::string& lines) {
    const std::size_t last = lines.rfind('|');
    if (last != std::string::npos) Lines(lines.substr(0, last));
    return Line(lines.substr(last + 1));
  }
  void AddMessages(const Texts& names) {
    for (const std::string& name : names) Add(name, "08:05", "Group=G");
  }
};

inline const std::string kMenu =
    "\r\n\r\nOrvanto 1.3\r\n\r\n1) New Task\r\n2) Delete Task\r\n3) Run Task\r\n4) Edit Task\r\n"
    "5) View Scripts Folder\r\n6) Chat\r\n7) Logout\r\n>";

}  // namespace orvanto
