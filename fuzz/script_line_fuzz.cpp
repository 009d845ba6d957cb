// Any bytes as a script, on a platform where nothing happens: it ends, and errors are the known
// ones.
#include <cstdint>
#include <cstdlib>

#include "core/ProgramFolder.h"
#include "core/modTaskOperations.h"
#include "platform/Clipboard.h"
#include "platform/Clock.h"
#include "platform/Desktop.h"
#include "platform/Files.h"
#include "platform/Keyboard.h"
#include "platform/MessageBoxes.h"
#include "platform/Session.h"
#include "platform/Sound.h"
#include "platform/registry/TreeRegistry.h"
#include "platform/text/Error.h"
#include "script/Script_Interpreter.h"

namespace orvanto {
namespace {

class NoRegistry : public TreeRegistry {
 public:
  void BeginChange() override {}
  Status EndChange() override { return kSuccess; }

 protected:
  Status Write(const WriteStep&) override { return kAccessDenied; }
};

class NoLoop : public EventLoop {
 public:
  class NoTimer : public Timer {
   public:
    void Start(std::chrono::milliseconds) override { enabled_ = true; }
    void Stop() override { enabled_ = false; }
    bool Enabled() const override { return enabled_; }

   private:
    bool enabled_ = false;
  };
  void Run() override {}
  void Quit() override {}
  bool QuitRequested() const override { return false; }
  void DoEvents() override {}
  void Post(std::function<void()>) override {}
  std::unique_ptr<Timer> NewTimer(std::function<void()> handler) override {
    tick = std::move(handler);
    return std::make_unique<NoTimer>();
  }
  std::unique_ptr<Deferred> NewDeferred(std::function<void()>) override { return nullptr; }
  std::function<void()> tick;

 protected:
  void BeginHold() override {}
  void EndHold() override {}
  bool Held() const override { return false; }
  void Round() override {}
};

class NoClock : public Clock {
 public:
  DateTime Now() const override { return {}; }
  std::int64_t UnixMilliseconds() const override { return 0; }
  std::string ShortDate(int, int, int) const override { return ""; }
};

// One file: the script.
class OneFile : public Files {
 public:
  bool TellsCaseApart() const override { return false; }
  bool Exists(const std::string& path) const override { return path == "c:\\f"; }
  void ListFolder(const std::string& folder, const EachEntry& each) override {
    if (folder == "c:\\" && each("d", EntryKind::Folder)) each("f", EntryKind::File);
  }
  void ListDetails(const std::string&, const std::function<bool(const Entry&)>&) override {}
  std::optional<Facts> Look(const std::string&) const override { return {}; }
  std::vector<std::string> Drives() const override { return {}; }
  Opened Open(const std::string&, Access) override { return {nullptr, kPermissionError}; }
  bool Read(const std::string& path, std::string& contents) override {
    contents = script;
    return path.find("script") != path.npos;
  }
  std::string FromCodePage(const std::string& bytes) const override { return bytes; }
  std::string Copy(const std::string&, const std::string&) override { return "no"; }
  std::string Replace(const std::string&, const std::string&) override { return "no"; }
  std::string Remove(const std::string&) override { return "no"; }
  std::string RemoveFolder(const std::string&) override { return "no"; }
  bool Append(const std::string&, const std::string&) override { return false; }
  std::string script;
};

struct Nothing : Shell, Session, Sound, MessageBoxes, Desktop, Keyboard, Clipboard {
  bool Execute(const ShellRequest&) override { return false; }
  bool Start(const std::string&, ShowCommand) override { return false; }
  bool StartAndWait(const std::string&, ShowCommand) override { return false; }
  bool End(std::uint32_t) override { return false; }
  void ChangeResolution(int, int) override {}
  void HangUp() override {}
  bool Play(const std::string&) override { return false; }
  void Beep() override {}
  Answer Show(const std::string&, const std::string&, Buttons buttons, BoxIcon) override {
    return buttons == Buttons::OkCancel ? Answer::Cancel : Answer::Yes;
  }
  std::vector<Window> TopLevelWindows() override { return {1, 2}; }
  std::string Title(Window window) override { return window == 1 ? "Notepad" : ""; }
  void BringToTop(Window) override {}
  void Show(Window, ShowCommand) override {}
  void Send(Window, std::uint32_t, std::uintptr_t, std::intptr_t) override {}
  void Type(const std::vector<KeyEvent>&) override {}
  bool SetText(const std::string&) override { return false; }
  std::string Text() override { return ""; }
};

struct Desk {
  NoLoop loop;
  OneFile files;
  Nothing nothing;
  ProgramFolder folder;
  FileActions actions{files, nothing, folder};
  FolderSearch search{loop, files, actions};
  WindowActions windows{loop, nothing, nothing, nothing};
  ScriptInterpreter scripts{loop,
                            files,
                            folder,
                            {nothing, nothing, nothing, nothing, actions, search, windows,
                             [](const std::string&) {}, nullptr}};
};

}  // namespace
}  // namespace orvanto

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvanto;
  static std::unique_ptr<Desk> desk;
  static int runs = 0;
  // A fresh table of slots now and then: failed and waiting scripts use it up.
  if (runs++ % 50 == 0) desk = std::make_unique<Desk>();
  desk->files.script.assign(reinterpret_cast<const char*>(data), size);
  try {
    desk->scripts.RunScript("script");
  } catch (const Error& error) {
    if (error.Number() == kInternalError) std::abort();
  }
  return 0;
}
