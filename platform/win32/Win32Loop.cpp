#include "platform/win32/Win32Loop.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvanto::win32 {

namespace {

// The system hands out posted messages before input, painting and timers, so a flood of the first
// would starve the others. A round therefore takes some of each kind in turn. Of input it takes
// one, and the characters that it makes: they are posted, and have to come before the next key.
struct Kind {
  UINT queue;
  int share;
};
constexpr Kind kKinds[] = {{QS_SENDMESSAGE, 1},
                           {QS_POSTMESSAGE | QS_HOTKEY, 16},
                           {QS_INPUT, 1},
                           {QS_PAINT, 16},
                           {QS_TIMER, 16}};
// Of posted work for one wake-up, which costs more than a small piece of work.
constexpr std::chrono::microseconds kSlice(1000);
constexpr int kRoundsPerDoEvents = 256;

template <typename Work>
void Guarded(const char* where, const Work& work) {
  try {
    work();
  } catch (...) {
    ReportException(where);
  }
}

}  // namespace

class Win32Loop::LoopTimer : public Timer {
 public:
  LoopTimer(Win32Loop& loop, std::function<void()> handler)
      : loop_(loop), handler_(std::move(handler)) {}
  ~LoopTimer() override { Stop(); }

  void Start(std::chrono::milliseconds interval) override {
    Stop();
    // A new number each time: a message of the former run may still be under way.
    id_ = ++loop_.lastTimer_;
    loop_.timers_[id_] = this;
    const auto period = std::clamp(interval, std::chrono::milliseconds(1), kLongest);
    SetTimer(loop_.window_.Get(), id_, static_cast<UINT>(period.count()), nullptr);
  }

  void Stop() override {
    if (id_ == 0) return;
    KillTimer(loop_.window_.Get(), id_);
    loop_.timers_.erase(id_);
    std::erase(loop_.heldTimers_, id_);
    id_ = 0;
  }

  bool Enabled() const override { return id_ != 0; }

  void Fire() const { Guarded("timer", handler_); }

 private:
  Win32Loop& loop_;
  std::function<void()> handler_;
  UINT_PTR id_ = 0;
};

Win32Loop::Win32Loop()
    : window_(L"OrvantoLoop", [this](UINT message, WPARAM wParam, LPARAM lParam) {
        return OnMessage(message, wParam, lParam);
      }) {
  window_.Get();  // is told of the end of the session
}

Win32Loop::~Win32Loop() { work_.Clear(); }

void Win32Loop::Run() {
  while (!quit_) Round();
}

void Win32Loop::Round() {
  if (PumpRound()) return;
  // Unlike GetMessage this also returns for messages that are there but were looked at before.
  MsgWaitForMultipleObjectsEx(0, nullptr, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
}

void Win32Loop::Quit() {
  quit_ = true;
  // A box that is open would wait for its answer for ever.
  if (holds_ > 0) PostQuitMessage(0);
  Wake();
}

void Win32Loop::DoEvents() {
  if (holds_ > 0) return;
  const struct Inside {
    explicit Inside(int& calls) : depth(++calls) {}
    ~Inside() { --depth; }
    int& depth;
  } inside(doEvents_);
  for (int round = 0; round < kRoundsPerDoEvents && PumpRound(); ++round) {
  }
}

bool Win32Loop::PumpRound() {
  bool any = false;
  for (const Kind& kind : kKinds) {
    MSG message;
    for (int i = 0; i < kind.share; ++i) {
      if (!PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE | (kind.queue << 16))) break;
      any = true;
      Handle(message);
      if (kind.queue == QS_INPUT) HandleCharacters();
      if (quit_) return true;
    }
  }
  return any;
}

void Win32Loop::Handle(MSG& message) {
  if (message.message == WM_QUIT) {
    quit_ = true;
    return;
  }
  bool done = false;
  if (preTranslate) Guarded("message", [&] { done = preTranslate(message); });
  if (done) return;
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

// Those that the last key has made.
void Win32Loop::HandleCharacters() {
  for (const UINT first : {WM_CHAR, WM_SYSCHAR}) {
    MSG message;
    while (!quit_ && PeekMessageW(&message, nullptr, first, first + 1, PM_REMOVE)) Handle(message);
  }
}

void Win32Loop::Wake() {
  if (wakePosted_) return;
  wakePosted_ = PostMessageW(window_.Get(), kWake, 0, 0) != 0;
}

void Win32Loop::EndHold() {
  --holds_;
  WakeForRest();
}

void Win32Loop::WakeForRest() {
  const bool rest = !work_.Empty() || !heldTimers_.empty() || !heldSockets_.empty();
  if (rest && holds_ == 0 && !quit_) Wake();
}

std::optional<LRESULT> Win32Loop::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case kWake:
      wakePosted_ = false;
      Deliver();
      return 0;
    case WM_TIMER:
      Fire(wParam);
      return 0;
    case WM_QUERYENDSESSION:
      return TRUE;  // at once: what there is to save is saved when the end is certain
    case WM_ENDSESSION:
      if (wParam != 0 && onSessionEnd) onSessionEnd();
      return 0;
    default:
      if (message < kFirstSocket || message > kLastSocket) return std::nullopt;
      OnSocket({message, wParam, lParam});
      return 0;
  }
}

void Win32Loop::Fire(UINT_PTR id) {
  const auto found = timers_.find(id);
  if (found == timers_.end()) return;
  if (holds_ == 0) return found->second->Fire();
  if (std::find(heldTimers_.begin(), heldTimers_.end(), id) == heldTimers_.end()) {
    heldTimers_.push_back(id);
  }
  if (onTimerHeld) Guarded("timer in a hold", onTimerHeld);
}

// The number comes round again only when all others have been used, long after the last message of
// its former owner.
UINT Win32Loop::BeginSocketMessages(SocketHandler handler) {
  do {
    lastSocket_ = lastSocket_ == kLastSocket ? kFirstSocket : lastSocket_ + 1;
  } while (sockets_.contains(lastSocket_));
  sockets_[lastSocket_] = std::move(handler);
  return lastSocket_;
}

void Win32Loop::OnSocket(const SocketMessage& message) {
  if (!sockets_.contains(message.message)) return;
  if (holds_ == 0 && heldSockets_.empty()) return DeliverSocket(message);
  heldSockets_.push_back(message);
  if (holds_ == 0) Wake();
}

void Win32Loop::DeliverSocket(const SocketMessage& message) {
  const auto found = sockets_.find(message.message);
  if (found == sockets_.end()) return;
  // A copy: the socket may be closed in it.
  Guarded("socket", [&, handler = found->second] { handler(message.wParam, message.lParam); });
}

// Any of this may begin a hold, run the loop, for which the rest need not wait, or stop timers.
void Win32Loop::Deliver() {
  while (holds_ == 0 && !quit_ && !heldTimers_.empty()) {
    const UINT_PTR id = heldTimers_.front();
    heldTimers_.erase(heldTimers_.begin());
    WakeForRest();
    Fire(id);
  }
  while (holds_ == 0 && !quit_ && !heldSockets_.empty()) {
    const SocketMessage message = heldSockets_.front();
    heldSockets_.pop_front();
    WakeForRest();
    DeliverSocket(message);
  }
  // What is posted meanwhile comes in the same slice, but for DoEvents, which is to return.
  const auto end = std::chrono::steady_clock::now() + kSlice;
  for (std::size_t left = work_.Size();
       holds_ == 0 && !quit_ && !work_.Empty() && (doEvents_ == 0 || left > 0); --left) {
    work_.RunFirst([this](const auto& work) {
      WakeForRest();
      Guarded("posted work", work);
    });
    if (std::chrono::steady_clock::now() >= end) break;
  }
  WakeForRest();
}

std::unique_ptr<Timer> Win32Loop::NewTimer(std::function<void()> handler) {
  return std::make_unique<LoopTimer>(*this, std::move(handler));
}

}  // namespace orvanto::win32
