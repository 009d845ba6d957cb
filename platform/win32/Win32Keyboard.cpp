#include "platform/win32/Win32Keyboard.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace orvanto::win32 {

namespace {

constexpr std::size_t kPiece = 100;  // inputs handed over at once
// A key is two inputs and takes three turns of a message loop: down, the character, up. Double
// that, because now and then one turn answers twice.
constexpr std::size_t kTurnsPerInput = 3;
constexpr WORD kNoKey = 0xE8;  // a virtual key that is assigned to nothing

// Milliseconds. A slow program under load takes some 10 for a character.
constexpr ULONGLONG kPatience = 10000;
constexpr ULONGLONG kPatiencePerPress = 50;
constexpr ULONGLONG kHanging = 5000;  // after which the system itself speaks of hanging

struct SystemKey {
  WORD virtualKey;
  bool extended = false;  // shares its scan code with a key of the number pad or the like
};

// What a key needs, with the bits of VkKeyScanEx.
enum Modifier : unsigned { kShift = 1, kControl = 2, kAlt = 4 };
constexpr struct {
  Modifier bit;
  SystemKey key;
} kModifiers[] = {{kShift, {VK_SHIFT}}, {kControl, {VK_CONTROL}}, {kAlt, {VK_MENU}}};

constexpr SystemKey kUsersKeys[] = {{VK_LSHIFT},         {VK_RSHIFT},    {VK_LCONTROL},
                                    {VK_RCONTROL, true}, {VK_LMENU},     {VK_RMENU, true},
                                    {VK_LWIN, true},     {VK_RWIN, true}};

unsigned ModifierOf(Key key) {
  switch (key) {
    case Key::Shift:
      return kShift;
    case Key::Control:
      return kControl;
    case Key::Alt:
      return kAlt;
    default:
      return 0;
  }
}

// In the order of Key, from Shift to Divide.
constexpr SystemKey kKeys[] = {
    {VK_SHIFT},       {VK_CONTROL},       {VK_MENU},         {VK_BACK},        {VK_CANCEL, true},
    {VK_CAPITAL},     {VK_CLEAR},         {VK_DELETE, true}, {VK_DOWN, true},  {VK_END, true},
    {VK_RETURN},      {VK_ESCAPE},        {VK_HELP},         {VK_HOME, true},  {VK_INSERT, true},
    {VK_LEFT, true},  {VK_NUMLOCK, true}, {VK_NEXT, true},   {VK_PRIOR, true}, {VK_SNAPSHOT, true},
    {VK_RIGHT, true}, {VK_SCROLL},        {VK_TAB},          {VK_UP, true},    {VK_ADD},
    {VK_SUBTRACT},    {VK_MULTIPLY},      {VK_DIVIDE, true},
};
static_assert(std::size(kKeys) == static_cast<int>(Key::F1) - static_cast<int>(Key::Shift));

SystemKey SystemKeyOf(Key key) {
  if (key < Key::F1) return kKeys[static_cast<int>(key) - static_cast<int>(Key::Shift)];
  return {static_cast<WORD>(VK_F1 + static_cast<int>(key) - static_cast<int>(Key::F1))};
}

// The keyboard layout of the window that the keys go to: each thread has its own.
HKL TargetLayout() {
  return GetKeyboardLayout(GetWindowThreadProcessId(GetForegroundWindow(), nullptr));
}

INPUT Input(WORD virtualKey, WORD scanCode, DWORD flags) {
  INPUT input = {};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = virtualKey;
  input.ki.wScan = scanCode;
  input.ki.dwFlags = flags;
  return input;
}

INPUT Input(SystemKey key, DWORD flags) {
  // Some programs look at nothing but the scan code.
  const UINT scanCode = MapVirtualKeyExW(key.virtualKey, MAPVK_VK_TO_VSC, TargetLayout());
  return Input(key.virtualKey, static_cast<WORD>(scanCode),
               key.extended ? flags | KEYEVENTF_EXTENDEDKEY : flags);
}

bool SameKey(const INPUT& one, const INPUT& other) {
  if (one.ki.wVk != other.ki.wVk) return false;
  return one.ki.wVk != 0 || one.ki.wScan == other.ki.wScan;  // Unicode is in the scan code
}

HWND FocusWindow() {
  GUITHREADINFO info = {};
  info.cbSize = sizeof info;
  if (GetGUIThreadInfo(0, &info) && info.hwndFocus != nullptr) return info.hwndFocus;
  return GetForegroundWindow();
}

// One text on its way into the window. Whatever is pressed when it is destroyed is released.
class Typist {
 public:
  explicit Typist(ULONGLONG presses)
      : deadline_(GetTickCount64() + kPatience + presses * kPatiencePerPress) {}
  ~Typist() {
    std::reverse(down_.begin(), down_.end());
    if (!down_.empty()) SendInput(static_cast<UINT>(down_.size()), down_.data(), sizeof(INPUT));
  }
  Typist(const Typist&) = delete;
  Typist& operator=(const Typist&) = delete;

  // False when there is no point in going on.
  bool Add(const KeyEvent& event);
  bool Flush();

 private:
  void Press(const KeyEvent& event);
  void PressCharacter(char32_t character);
  void PressUnicode(char32_t character);
  void PressByLayout(char32_t character);
  void PressKey(SystemKey key);
  void Down(SystemKey key);
  void Up(SystemKey key);
  void LetGoOfUsersKeys();
  bool WaitUntilTaken(std::size_t inputs) const;

  ULONGLONG deadline_;
  unsigned held_ = 0;  // the modifiers of Hold events
  bool afterCr_ = false;
  std::vector<INPUT> piece_;
  std::vector<INPUT> down_;  // the releases of all keys that are down because of us
};

bool Typist::Add(const KeyEvent& event) {
  const unsigned modifier = ModifierOf(event.key);
  if (event.action == KeyEvent::Action::Press) {
    for (std::uint32_t i = 0; i < event.count; ++i) {
      Press(event);
      if (piece_.size() >= kPiece && !Flush()) return false;
    }
    return true;
  }
  if (event.key == Key::Character) return true;  // only keys can be held
  // A chord goes in one piece, so that nothing the user does comes in between.
  if (event.action == KeyEvent::Action::Hold) {
    if (held_ == 0 && !Flush()) return false;
    held_ |= modifier;
    Down(SystemKeyOf(event.key));
    return true;
  }
  Up(SystemKeyOf(event.key));
  held_ &= ~modifier;
  return held_ != 0 || Flush();
}

void Typist::Press(const KeyEvent& event) {
  const bool afterCr = std::exchange(afterCr_, false);
  if (event.key != Key::Character) {
    PressKey(SystemKeyOf(event.key));
  } else if (event.character == U'\n' && afterCr) {
    // the Enter was the CR's
  } else {
    afterCr_ = event.character == U'\r';
    PressCharacter(event.character);
  }
}

void Typist::PressCharacter(char32_t character) {
  if (character == U'\r' || character == U'\n') {
    PressKey({VK_RETURN});
  } else if (character == U'\t') {
    PressKey({VK_TAB});
  } else if (held_ == 0) {
    PressUnicode(character);
  } else {
    PressByLayout(character);
  }
}

void Typist::PressUnicode(char32_t character) {
  const auto add = [this](char32_t unit) {
    for (const DWORD up : {0, KEYEVENTF_KEYUP}) {
      piece_.push_back(Input(0, static_cast<WORD>(unit), KEYEVENTF_UNICODE | up));
    }
  };
  if (character < 0x10000) {
    add(character);
  } else {
    add(0xD800 + ((character - 0x10000) >> 10));
    add(0xDC00 + ((character - 0x10000) & 0x3FF));
  }
}

void Typist::PressByLayout(char32_t character) {
  const SHORT found =
      character < 0x10000 ? VkKeyScanExW(static_cast<WCHAR>(character), TargetLayout()) : SHORT{-1};
  WORD virtualKey = found & 0xFF;
  unsigned needs = (found >> 8) & 0xFF;
  if (found == -1 || needs > (kShift | kControl | kAlt)) {
    // Shortcuts of Latin letters exist on all layouts, by the virtual key.
    const bool capital = character >= U'A' && character <= U'Z';
    if (!capital && !(character >= U'a' && character <= U'z')) return PressUnicode(character);
    virtualKey = static_cast<WORD>(capital ? character : character - U'a' + U'A');
    needs = capital ? kShift : 0u;
  }
  needs &= ~held_;
  for (const auto& modifier : kModifiers) {
    if (needs & modifier.bit) Down(modifier.key);
  }
  PressKey({virtualKey});
  for (const auto& modifier : kModifiers) {
    if (needs & modifier.bit) Up(modifier.key);
  }
}

void Typist::PressKey(SystemKey key) {
  Down(key);
  Up(key);
}

void Typist::Down(SystemKey key) { piece_.push_back(Input(key, 0)); }

void Typist::Up(SystemKey key) { piece_.push_back(Input(key, KEYEVENTF_KEYUP)); }

// Otherwise a text becomes shortcuts. Letting go of Alt or of the Windows key alone would open a
// menu, so another key comes before it.
void Typist::LetGoOfUsersKeys() {
  std::vector<INPUT> inputs = {Input({kNoKey}, 0), Input({kNoKey}, KEYEVENTF_KEYUP)};
  const std::size_t nothing = inputs.size();
  for (const SystemKey& key : kUsersKeys) {
    if (GetAsyncKeyState(key.virtualKey) < 0) inputs.push_back(Input(key, KEYEVENTF_KEYUP));
  }
  if (inputs.size() == nothing) return;
  SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
}

bool Typist::Flush() {
  if (piece_.empty()) return true;
  if (down_.empty()) LetGoOfUsersKeys();
  down_.reserve(down_.size() + piece_.size());  // nothing may fail while keys are down
  const UINT sent = SendInput(static_cast<UINT>(piece_.size()), piece_.data(), sizeof(INPUT));
  for (UINT i = 0; i < sent; ++i) {
    INPUT input = piece_[i];
    if (input.ki.dwFlags & KEYEVENTF_KEYUP) {
      std::erase_if(down_, [&](const INPUT& each) { return SameKey(each, input); });
    } else {
      input.ki.dwFlags |= KEYEVENTF_KEYUP;
      down_.push_back(input);
    }
  }
  const bool all = sent == piece_.size();
  piece_.clear();
  return all && WaitUntilTaken(sent);
}

// Nothing tells how many keys a window has still to take. But it answers a message when it comes
// round to fetch the next one, and it fetches them one by one: so many answers, so many turns.
// A busy machine may answer several times in a turn; what is late then still goes to this window.
bool Typist::WaitUntilTaken(std::size_t inputs) const {
  for (std::size_t i = 0; i < inputs * kTurnsPerInput; ++i) {
    const HWND target = FocusWindow();
    if (target == nullptr) return true;
    const ULONGLONG now = GetTickCount64();
    if (now >= deadline_) return false;
    const auto patience = static_cast<UINT>(std::min(deadline_ - now, kHanging));
    if (SendMessageTimeoutW(target, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, patience, nullptr)) continue;
    // A window that is gone took its last key: what follows is for the next one. A window that may
    // not be asked is not waited for.
    if (GetLastError() != ERROR_ACCESS_DENIED && IsWindow(target)) return false;
  }
  return true;
}

}  // namespace

void Win32Keyboard::Type(const std::vector<KeyEvent>& events) {
  ULONGLONG presses = 0;
  for (const KeyEvent& event : events) presses += event.count;
  Typist typist(presses);
  for (const KeyEvent& event : events) {
    if (!typist.Add(event)) return;
  }
  typist.Flush();
}

}  // namespace orvanto::win32
