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
  // Pieces between bars; "~" ends a line. A connection that is begun anew meanwhile is made, but
  // for acts: "@P" pauses or resumes, "@S" stops, "@u" closes the window, "@n" connects; the other
  // side closes the connection by "@." and breaks it by "@!"; a second passes by "@t".
  void Hear(const std::string& pieces) {
    std::istringstream rest(pieces);
    for (std::string piece; std::getline(rest, piece, '|');) {
      for (std::size_t at; (at = piece.find('~')) != std::string::npos;) {
        piece.replace(at, 1, kCrLf);
      }
      const bool acts = piece.starts_with('@');
      if (acts) Act(piece[1]);
      if (!acts && Http().GetState() == TcpSocket::State::Connecting) Http().Connected();
      if (!acts && IsConnected()) Http().PeerSends(piece);
    }
  }
  void Act(char what) {
    if (what == 'P') window.cmdPause.Press();
    if (what == 'S') window.cmdStop.Press();
    if (what == 'u') window.Close();
    if (what == 'n') Http().Connected();
    if (what == '.' && IsConnected()) Http().PeerCloses();
    if (what == '!') Http().receiveError = 10054, Http().Receive();
    if (what == 't') loop.Advance(1000);
    Http().receiveError = 0;
  }
  bool IsConnected() { return Http().GetState() == TcpSocket::State::Connected; }
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
