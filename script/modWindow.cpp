#include "script/modWindow.h"

#include <algorithm>

#include "platform/Clipboard.h"
#include "platform/Desktop.h"
#include "platform/EventLoop.h"
#include "platform/text/Case.h"
#include "platform/text/Utf8.h"
#include "script/KeySequence.h"

namespace orvanto {
namespace {

constexpr std::uint32_t kDestroyMessage = 2;
constexpr std::uintptr_t kCloseCommand = 0xF060;

// Alt+Space opens the window menu of a console; its Edit, its Paste.
constexpr const char* kPasteKeys = "%{ }ep";
constexpr const char* kCloseFileKeys = "%fc";
constexpr const char* kExitKeys = "%fx";

// Takes the stars off; false when the title was still written with stars after that.
bool TakeStarsOff(std::string& title) {
  const auto starred = [&] {
    return !title.empty() && title.front() == '*' && title.back() == '*';
  };
  if (!starred()) return true;
  title = title.size() > 2 ? title.substr(1, title.size() - 2) : "";
  return !starred();
}

// How often a title holds the text: overlapping places count, and an empty text is at every
// character and after the last. A window without a title holds nothing.
std::size_t Places(const std::string& title, const std::string& wanted) {
  if (title.empty()) return 0;
  if (wanted.empty()) {
    return title.size() - static_cast<std::size_t>(std::ranges::count_if(title, IsContinuation)) +
           1;
  }
  std::size_t places = 0;
  for (auto at = title.find(wanted); at != std::string_view::npos; at = title.find(wanted, at + 1))
    ++places;
  return places;
}

}  // namespace

// What is done to each window that matches.
struct WindowActions::Step {
  WindowCode code;
  std::string clipboardText;
  std::string keys;
};

void WindowActions::WindowAction(std::string title, WindowCode code, const std::string& text) {
  Step step{code, text, ""};
  switch (code) {
    case WindowCode::SendKeys:
      step.keys = text;
      break;
    case WindowCode::SendKeysDos:
      step.keys = kPasteKeys;
      break;
    case WindowCode::CloseFile:
      step.keys = kCloseFileKeys;
      break;
    case WindowCode::Exit:
      step.keys = kExitKeys;
      break;
    default:
      break;
  }
  const bool plain = TakeStarsOff(title);
  const std::string wanted = FoldCase(title);
  // A list made beforehand: bringing a window to the top reorders the windows, and a walk along
  // them would meet some again for ever.
  for (const Desktop::Window window : desktop_.TopLevelWindows()) {
    const std::string own = FoldCase(desktop_.Title(window));
    // Doubled stars end the whole operation at the first window that has a title.
    if (!own.empty() && !plain) return;
    for (std::size_t left = Places(own, wanted); left > 0; --left) Act(window, step);
    loop_.DoEvents();
    if (loop_.QuitRequested()) return;
  }
}

void WindowActions::Act(std::uintptr_t window, const Step& step) {
  if (step.code == WindowCode::Close) {
    // Message 0 is harmless to nearly every window: kept as it is.
    desktop_.Send(window, 0, kCloseCommand, 0);
    if (desktop_.Title(window).empty()) desktop_.Send(window, kDestroyMessage, 0, 0);
    return;
  }
  // Before anything is done: keys that do not parse leave the window alone.
  const std::vector<KeyEvent> keys = ParseKeySequence(step.keys);
  if (step.code == WindowCode::SendKeysDos && !clipboard_.SetText(step.clipboardText)) {
    // Whatever another program has left there is not for this window.
    if (onTrouble) {
      onTrouble("Window: " + desktop_.Title(window) +
                " was sent nothing: the clipboard could not be written");
    }
    return;
  }
  desktop_.BringToTop(window);
  switch (step.code) {
    case WindowCode::Hide:
      desktop_.Show(window, ShowCommand::Hide);
      break;
    case WindowCode::Minimize:
      desktop_.Show(window, ShowCommand::Minimized);
      break;
    case WindowCode::Maximize:
      desktop_.Show(window, ShowCommand::Maximized);
      break;
    default:
      desktop_.Show(window, ShowCommand::Normal);
      break;
  }
  if (!keys.empty()) keyboard_.Type(keys);
}

}  // namespace orvanto
