#include "tests/support/FakePlatform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <stdexcept>

#include "platform/text/Case.h"

namespace orvanto {

DateTime FakeClock::Now() const {
  const std::time_t seconds = now_ / 1000;
  const std::tm& now = *std::gmtime(&seconds);
  return {now.tm_year + 1900, now.tm_mon + 1, now.tm_mday,    now.tm_hour,
          now.tm_min,         now.tm_sec,     now.tm_wday + 1};
}

std::string FakeClock::ShortDate(int year, int month, int day) const {
  std::string text;
  for (const char c : shortDateOrder) {
    const int number = c == 'd' ? day : c == 'm' ? month : c == 'y' ? year : 0;
    text += number != 0 ? std::to_string(number) : std::string(1, c);
  }
  return text;
}

void FakeClock::Set(int year, int month, int day, int hour, int minute, int second,
                    int millisecond) {
  const std::chrono::sys_days date = std::chrono::year(year) / month / day;
  now_ = (date.time_since_epoch() / std::chrono::seconds(1) + (hour * 60 + minute) * 60 + second) *
             1000LL +
         millisecond;
}

class FakeLoop::FakeTimer : public Timer {
 public:
  FakeTimer(FakeLoop& loop, std::function<void()> handler)
      : loop_(loop), handler_(std::move(handler)) {
    loop_.timers_.push_back(this);
  }
  ~FakeTimer() override { loop_.timers_.remove(this); }

  void Start(std::chrono::milliseconds interval) override {
    interval_ = std::clamp(interval, std::chrono::milliseconds(1), kLongest).count();
    deadline_ = loop_.monotonic_ + interval_;
    enabled_ = true;
  }
  void Stop() override { enabled_ = false; }
  bool Enabled() const override { return enabled_; }

  std::int64_t Deadline() const { return deadline_; }
  void Deliver() {
    deadline_ += (loop_.monotonic_ - deadline_) / interval_ * interval_ + interval_;
    handler_();
  }

 private:
  FakeLoop& loop_;
  std::function<void()> handler_;
  std::int64_t interval_ = 1;
  std::int64_t deadline_ = 0;
  bool enabled_ = false;
};

std::unique_ptr<Timer> FakeLoop::NewTimer(std::function<void()> handler) {
  return std::make_unique<FakeTimer>(*this, std::move(handler));
}

void FakeLoop::Pass(std::int64_t milliseconds) {
  monotonic_ += milliseconds;
  clock_.Move(milliseconds);
}

void FakeLoop::DoEvents() {
  if (held_ > 0) return;
  for (std::size_t left = work_.Size(); left > 0 && !work_.Empty(); --left) {
    work_.RunFirst([](const auto& work) { work(); });
  }
  while (DeliverNext(monotonic_)) {
  }
}

void FakeLoop::Round() {
  if (!work_.Empty()) return DoEvents();
  if (!DeliverNext(std::numeric_limits<std::int64_t>::max())) {
    throw std::logic_error("waiting for what can never come");
  }
}

bool FakeLoop::DeliverNext(std::int64_t until) {
  FakeTimer* next = nullptr;
  for (FakeTimer* timer : timers_) {
    if (!timer->Enabled() || timer->Deadline() > until) continue;
    if (next == nullptr || timer->Deadline() < next->Deadline()) next = timer;
  }
  if (next == nullptr) return false;
  if (next->Deadline() > monotonic_) Pass(next->Deadline() - monotonic_);
  if (lateness) Pass(lateness());
  next->Deliver();
  return true;
}

void FakeLoop::Advance(std::int64_t milliseconds) {
  const std::int64_t until = monotonic_ + milliseconds;
  DoEvents();
  while (monotonic_ < until && DeliverNext(until)) DoEvents();
  if (monotonic_ < until) Pass(until - monotonic_);
}

std::vector<Desktop::Window> FakeDesktop::TopLevelWindows() {
  std::vector<Window> windows;
  for (Window window = 0; window < titles.size(); ++window) windows.push_back(window);
  return windows;
}

void FakeDesktop::Send(Window window, std::uint32_t message, std::uintptr_t wParam, std::intptr_t) {
  Did("send " + std::to_string(message) + " " + std::to_string(wParam) + " " +
      std::to_string(window));
  if (closes) titles[window].clear();
}

std::optional<std::string> FakeFileDialogs::ChooseFile(const std::string& title,
                                                       const std::vector<FileFilter>& filters,
                                                       const std::string& folder) {
  asked = title + "|" + folder;
  for (const FileFilter& filter : filters) asked += "|" + filter.name + "=" + filter.pattern;
  return chosen;
}

Answer FakeMessageBoxes::Show(const std::string& text, const std::string&, Buttons buttons,
                              BoxIcon) {
  buttonsShown = buttons;
  if (expected.empty()) {
    if (!answersAll) ADD_FAILURE() << "unexpected message box: " << text;
    return buttons == Buttons::Ok         ? Answer::Ok
           : buttons == Buttons::OkCancel ? Answer::Cancel
                                          : Answer::No;
  }
  const Expected box = std::move(expected.front());
  expected.pop_front();
  EXPECT_EQ(text, box.text);
  if (box.whileOpen) box.whileOpen();
  return box.answer;
}

FakePlatform::~FakePlatform() {
  for (const auto& box : messageBoxes.expected)
    ADD_FAILURE() << "this box did not come: " << box.text;
  EXPECT_EQ(registry.OpenKeys(), 0U);
  EXPECT_EQ(registry.ChangeDepth(), 0);
}

}  // namespace orvanto
