// The downloads of a program on fakes.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "core/ProgramSettings.h"
#include "download/Downloads.h"
#include "platform/text/Lines.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {

inline constexpr const char* kUrl = "http://host/dir/file";
inline constexpr const char* kPath = "C:\\Orvanto\\file";
inline constexpr const char* kNoResuming = "Server did not accept resuming.";

struct DownloadDesk : CoreDesk {
  DownloadDesk() {
    sockets.names["host"] = {0x01020304};
    files.diskLeft = std::size_t{1} << 20;
  }
  ~DownloadDesk() { downloads.Unload(); }

  bool below = false;  // somebody is, and handles events
  RemoteSettings switches;
  Downloads downloads{forms,
                      {.loop = loop,
                       .sockets = sockets,
                       .files = files,
                       .clock = clock,
                       .clipboard = clipboard,
                       .shell = shell,
                       .messageBoxes = messageBoxes,
                       .registry = registry,
                       .settings = settings,
                       .remoteSettings = switches,
                       .folder = folder,
                       .mayWait = [this] { return !below; }}};
  frmDownload& window = downloads.window;
  std::string ends;  // "whole" or what went wrong, each in brackets
  Subscription listening = downloads.ended.Subscribe(
      [this](const DownloadEnd& end) { ends += "[" + (end.whole ? "whole" : end.trouble) + "]"; });

  FakeSocketHost::Socket& Http() { return *sockets.sockets.front(); }

  // Until the request has been sent; returns it.
  std::string Begin(const std::string& url = kUrl) {
    downloads.BeginDownload(url);
    loop.DoEvents();
    if (Http().GetState() == TcpSocket::State::Connecting) Http().Connected();
    return Http().Sent();
  }
  // Pieces between bars; "~" ends a line. A connection that is begun anew meanwhile is made.
  void Hear(const std::string& pieces) {
    std::istringstream rest(pieces);
    for (std::string piece; std::getline(rest, piece, '|');) {
      for (std::size_t at; (at = piece.find('~')) != std::string::npos;) {
        piece.replace(at, 1, kCrLf);
      }
      if (Http().GetState() == TcpSocket::State::Connecting) Http().Connected();
      if (Http().GetState() == TcpSocket::State::Connected) Http().PeerSends(piece);
    }
  }
  void Expect(const std::string& text, Answer answer = Answer::Ok) {
    messageBoxes.expected.push_back({text, answer});
  }
  std::string File() { return files.contents.contains(kPath) ? files.contents[kPath] : "none"; }
  // Of Download, Pause, Stop and Run those that can be pressed, and what is shown.
  std::string Shown() {
    std::string text;
    for (const forms::Button* button :
         {&window.cmdDownload, &window.cmdPause, &window.cmdStop, &window.cmdRun}) {
      text += button->Usable() ? "x" : "-";
    }
    return text + " " + (window.picDownloadProgress.Visible() ? "box" : window.lblStatus.Text());
  }
};

}  // namespace orvanto
