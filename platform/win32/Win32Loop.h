// The message loop. Everything the loop delivers comes through one hidden window of its own, also
// where a message loop of the system's runs (a message box, a menu, a window being moved); that is
// why holding back is done in that window's procedure.
#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/WorkQueue.h"
#include "platform/win32/HiddenWindow.h"

namespace orvanto::win32 {

class Win32Loop : public EventLoop {
 public:
  Win32Loop();
  ~Win32Loop() override;

  void Run() override;
  void Quit() override;
  bool QuitRequested() const override { return quit_; }
  bool Held() const override { return holds_ > 0; }
  void DoEvents() override;
  void Post(std::function<void()> work) override { work_.Post(std::move(work)); }
  std::unique_ptr<Deferred> NewDeferred(std::function<void()> handler) override {
    return work_.NewDeferred(std::move(handler));
  }
  std::unique_ptr<Timer> NewTimer(std::function<void()> handler) override;

  // Sees every message before its window does; true when it is dealt with (keyboard navigation).
  std::function<bool(MSG&)> preTranslate;

  // Messages to Window() for one opening of a socket: from Begin to End the handler gets what is
  // posted with that number. They are held like everything else.
  using SocketHandler = std::function<void(WPARAM, LPARAM)>;
  UINT BeginSocketMessages(SocketHandler handler);
  void EndSocketMessages(UINT message) { sockets_.erase(message); }
  HWND Window() { return window_.Get(); }

  // A timer has fallen due inside a Hold, in which messages come nevertheless. For what shows the
  // time: it may let nothing in.
  std::function<void()> onTimerHeld;

  // The session ends and the process with it as soon as this returns. Called even inside a Hold.
  std::function<void()> onSessionEnd;

 protected:
  void BeginHold() override { ++holds_; }
  void EndHold() override;
  void Round() override;

 private:
  class LoopTimer;

  struct SocketMessage {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
  };

  // Messages of the loop's window.
  static constexpr UINT kWake = WM_APP;
  static constexpr UINT kFirstSocket = WM_APP + 1;
  static constexpr UINT kLastSocket = 0xBFFF;

  std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
  bool PumpRound();
  void Handle(MSG& message);
  void HandleCharacters();
  void Wake();
  void WakeForRest();
  void Deliver();
  void Fire(UINT_PTR id);
  void OnSocket(const SocketMessage& message);
  void DeliverSocket(const SocketMessage& message);

  bool quit_ = false;
  int holds_ = 0;
  int doEvents_ = 0;  // that are under way
  bool wakePosted_ = false;
  WorkQueue work_{[this] { Wake(); }};
  std::map<UINT_PTR, LoopTimer*> timers_;  // the running ones; every start has a number of its own
  std::vector<UINT_PTR> heldTimers_;       // fell due inside a hold, each at most once
  UINT_PTR lastTimer_ = 0;
  std::map<UINT, SocketHandler> sockets_;
  // In order. The system reports nothing twice before it was dealt with, so there are few.
  std::deque<SocketMessage> heldSockets_;
  UINT lastSocket_ = kLastSocket;
  HiddenWindow window_;
};

}  // namespace orvanto::win32
