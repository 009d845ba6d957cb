#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/text/Error.h"
#include "platform/text/Utf8.h"
#include "script/Commands.h"
#include "script/FileFinder.h"
#include "script/KeySequence.h"
#include "script/ScriptLine.h"
#include "script/Script_Interpreter.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

// The script engine on a platform of fakes.
struct ScriptDesk : CoreDesk {
  ScriptDesk() {
    scripts.onFailure = [this](const std::string& message) { failures.push_back(message); };
  }

  FileActions fileActions{files, shell, folder};
  FolderSearch search{loop, files, fileActions};
  WindowActions windows{loop, desktop, keyboard, clipboard};
  Texts failures;
  ScriptInterpreter scripts{loop,
                            files,
                            folder,
                            {shell, session, sound, messageBoxes, fileActions, search, windows,
                             [this](const std::string& text) { done.push_back("pop " + text); },
                             [this](const std::string& url, const std::string& second) {
                               done.push_back("download " + url + " " + second);
                             }}};

  void Script(const std::string& name, const std::string& text) {
    files.contents["C:\\Orvanto\\scripts\\" + name] = text;
  }
  // Runs a script of that text; the number of the error that reached the caller, or 0.
  int RunText(const std::string& text) {
    Script("s.txt", text);
    return RunByPath("s.txt");
  }
  int RunByPath(const std::string& path) {
    return ErrorOf([&] { scripts.RunScript(path); });
  }
  // What a check of that script tells.
  std::string Faults() const {
    std::string faults;
    scripts.CheckScript("s.txt", [&](int line, const std::string& reason) {
      faults += std::to_string(line) + ": " + reason + "\n";
    });
    return faults;
  }
  // The files with their texts, but for the script.
  Texts Files() {
    files.contents.erase("C:\\Orvanto\\scripts\\s.txt");
    Texts paths;
    for (const auto& [path, text] : files.contents) paths.push_back(path + " " + text);
    return paths;
  }
  // What has been done since the last call, and what a script of that text does.
  Texts Done() { return std::exchange(done, {}); }
  Texts Runs(const std::string& text) {
    EXPECT_EQ(RunText(text), 0) << text;
    return Done();
  }
  std::string Log() { return files.contents["C:\\Orvanto\\ORVSCRPT.LOG"]; }
  // What the log holds after a line or an opening failed and the failure behind it.
  static std::string Twice(const std::string& path) {
    const std::string line = "\"File: " + path + " not found or file empty\"\r\n";
    return line + line;
  }
};

struct Runner : testing::Test, ScriptDesk {};

TEST(ScriptLine, SplitsArguments) {
  // A line, its arguments; "-" stands for the value from the line before.
  for (const std::string row :
       {"open('c:\\a.doc',3) => c:\\a.doc|3", "OPEN('A b') => A b|", "open(2) => 2|", "open() => |",
        "open('') => |", "open(') => |", "open('a','bc') => a','bc|", "open('it's',x) => it's|x",
        "open('a','b',c) => a|'b',c", "open('a', b ) => a| b ", "open(',x) => |x",
        "open('a',) => a|", "open(a,'b') => a,'b'|", "open(\"a\") => \"a\"|", "open('a'b) => -|-",
        "open('a',b => -|-", "open('a')  => -|-", "open => -|-", " => -|-"}) {
    const std::string line = row.substr(0, row.find(" => "));
    std::string word = "open";
    std::string arg1 = "-";
    std::string arg2 = "-";
    ReadCommandWord(line, word);
    SplitArguments(word, line, arg1, arg2);
    EXPECT_EQ(line + " => " + arg1 + "|" + arg2, row);
  }
}

TEST_F(Runner, RunsLinesOfAnyEndingAndEncoding) {
  EXPECT_EQ(Runs("beep()\r\nBEEP()\n   Beep()  \rbeep()"), Texts(4, "beep"));
  // A line without a parenthesis repeats the command.
  EXPECT_EQ(Runs("* a comment\n*(another)\nbeep()\n\nbeep\n* one more"), Texts(4, "beep"));
  for (const std::string text :
       {"\xEF\xBB\xBFmsgbox('\xC3\xA4',nostop)", "msgbox('\xE4',nostop)"}) {
    EXPECT_EQ(Runs(text), Texts{"pop \xC3\xA4"});
  }
  for (const std::string& text : {std::string("a\0b", 3), std::string(200000, 'x')}) {
    EXPECT_EQ(Runs("msgbox('" + text + "',nostop)"), Texts{"pop " + text});
  }
  for (const bool highFirst : {false, true}) {
    const std::u16string text = u"\uFEFFmsgbox('\U0001F552\xD83D\xDD52\xDD52\xD83D',nostop)\r\n*(";
    std::string bytes(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    for (std::size_t i = 0; highFirst && i < bytes.size(); i += 2)
      std::swap(bytes[i], bytes[i + 1]);
    EXPECT_EQ(Runs(bytes + "\xFF"), Texts{"pop \U0001F552\U0001F552\uFFFD\uFFFD"});
  }
  EXPECT_EQ(Log(), "");
  EXPECT_FALSE(scripts.Slot(1).inUse);
}

TEST_F(Runner, ABadLineIsLoggedTwiceAndReachesTheCaller) {
  const std::pair<const char*, Texts> cases[] = {
      {"Not a command", {"rem(x)", "\nbeep()", "beep", "\tbeep()"}},
      {"Type mismatch", {"changeres(x)\nbeep()", "delay('3')", "delay()"}},
      {"Overflow", {"sdown(99999999999)"}},
      {"A brace is not closed", {"sendkeys('x',{)"}}};
  for (const auto& [reason, texts] : cases) {
    for (const std::string& text : texts) {
      ScriptDesk desk;
      desk.desktop.titles = {"x"};
      EXPECT_EQ(desk.RunText(text), kFileAlreadyOpen) << text;
      EXPECT_EQ(desk.failures, Texts{std::string("s.txt, line 1: ") + reason}) << text;
      EXPECT_EQ(desk.Log(), ScriptDesk::Twice("s.txt")) << text;
      EXPECT_EQ(desk.Faults(), std::string("1: ") + reason + "\n") << "without running it";
      EXPECT_EQ(desk.scripts.Slot(1).linesDone, 2) << "the failed line and the one after it";
    }
  }
  EXPECT_EQ(RunByPath("Missing.txt"), kFileNotFoundError);
  EXPECT_EQ(Log(), Twice("Missing.txt"));
  EXPECT_EQ(RunText("msgbox('x',nostop)\rx\ry("), kFileAlreadyOpen);
  EXPECT_EQ(failures, (Texts{"Missing.txt: File not found", "s.txt, line 3: Not a command"}));
}

TEST_F(Runner, ADelayEndsWithTheTickOfItsNumberAndTakesAnotherSlot) {
  bool idle = false;
  scripts.onIdle = [&] { idle = true; };
  EXPECT_EQ(Runs("beep()\ndelay(5)\nmsgbox('end',nostop)"), Texts{"beep"});
  EXPECT_TRUE(scripts.Waiting());
  loop.Advance(5 * 1000 - 1);
  EXPECT_TRUE(done.empty());
  // The resumed script takes a fresh slot and so starts from its first line again.
  loop.Advance(1);
  EXPECT_EQ(done, Texts{"beep"});
  EXPECT_EQ(scripts.Slot(1).linesDone, 3);
  EXPECT_TRUE(scripts.Slot(1).inUse && scripts.Slot(2).delayPending);
  loop.Advance(5 * 98 * 1000);  // until none is left
  EXPECT_EQ(Done().size(), 99U);
  EXPECT_FALSE(idle);
  loop.Advance(5 * 1000);
  EXPECT_EQ(failures, Texts{"s.txt: all 100 places are taken"});
  EXPECT_TRUE(idle && !scripts.Waiting());
  EXPECT_EQ(RunByPath("s.txt"), kSubscriptOutOfRange);
}

TEST_F(Runner, OnlyTheLowestDelayCountsAndAStartStopsTheCount) {
  Script("b.txt", "delay(2)");
  Script("c.txt", "*");
  const auto elapsed = [&] {
    return std::to_string(scripts.Slot(1).delayElapsed) +
           std::to_string(scripts.Slot(2).delayElapsed);
  };
  EXPECT_EQ(RunText("delay(3)\nbeep()"), 0);
  EXPECT_EQ(RunByPath("b.txt"), 0);
  loop.Advance(2000);
  EXPECT_EQ(elapsed(), "31");
  // Any start stops the shared timer.
  EXPECT_EQ(RunByPath("c.txt"), 0);
  loop.Advance(10000);
  EXPECT_EQ(elapsed(), "31");
}

TEST_F(Runner, TheCountersOfASlotHold16Bits) {
  std::string text;
  for (int i = 0; i < 32767; ++i) text += "*\n";
  EXPECT_EQ(RunText(text), 0);
  EXPECT_EQ(RunText("beep()"), kOverflow);
  EXPECT_TRUE(done.empty());
}

TEST_F(Runner, AScriptMayStartAnotherFromInsideAndEndsWithTheProgram) {
  Script("inner.txt", "beep()\nmsgbox('inner',nostop)");
  messageBoxes.expected = {{"outer", Answer::Ok,
                            [&] {
                              EXPECT_EQ(RunByPath("inner.txt"), 0);
                              EXPECT_EQ(scripts.CommandAtWork(), "msgbox");
                            }},
                           {"the end", Answer::Ok, [&] { loop.Quit(); }}};
  EXPECT_EQ(RunText("msgbox('outer')\nbeep()\nmsgbox('the end')\nmsgbox('two')\nshutdown()"), 0);
  EXPECT_EQ(done, (Texts{"beep", "pop inner", "beep"}));
  EXPECT_EQ(scripts.CommandAtWork(), "");
  EXPECT_FALSE(scripts.Slot(2).inUse);
}

struct Commands : testing::Test, ScriptDesk {};

TEST_F(Commands, SimpleOnesReachTheirService) {
  EXPECT_EQ(Runs("changeres(1)\nchangeres(2)\nchangeres('3')\nchangeres(4)\nchangeres(-1)\n"
                 "sdown(5)\nshutdown()\nreset()\nhangup()\ndialout('My ISP')\nbeep()\n"
                 "download('http://x/y',z)"),
            (Texts{"size 640x480", "size 800x600", "size 1024x768", "size 0x0", "size 0x0", "end 5",
                   "end 1", "end 2", "hang up", "start rundll rnaui.dll,RnaDial My ISP", "beep",
                   "download http://x/y z"}));
  files.contents["C:\\D\\A.txt"] = "";
  // No style, which is 0, then those of the table that are not simply shown, and one too many.
  EXPECT_EQ(Runs("open('c:\\d\\a.TXT')\nload(' C:\\D\\A.txt ',3)\nprint('c:\\d\\a.txt')\n"
                 "openwait('c:\\d\\a.txt',6)\nloadwait(c:\\d\\a.txt)\n"
                 "open('c:\\d\\a.txt',4)\nopen('c:\\d\\a.txt',7)\n"
                 "load('c:\\d\\a.txt',2)\nload('c:\\d\\a.txt',5)"),
            (Texts{"open c:\\d\\a.txt in '0' 1", "open c:\\d\\a.txt in '0' 3",
                   "print c:\\d\\a.txt in '0' 1", "wait for \"c:\\d\\a.txt\" 0",
                   "wait for \"c:\\d\\a.txt\" 1", "open c:\\d\\a.txt in '0' 4",
                   "open c:\\d\\a.txt in '0' 0", "open c:\\d\\a.txt in '0' 2",
                   "open c:\\d\\a.txt in '0' 7"}));
  EXPECT_EQ(Runs("open('a.txt',x)\nopen('c:\\nowhere\\a.txt',x)\nopen('c:\\d\\',x)"), Texts{})
      << "what is not there is passed over before anything else";
  EXPECT_EQ(RunText("open('c:\\d\\a.txt',x)"), kFileAlreadyOpen);
}

TEST_F(Commands, FilesAreCopiedMovedAndDeleted) {
  files.contents = {
      {"C:\\x\\a.txt", "A"}, {"C:\\x\\b.txt", "B"}, {"C:\\x\\s.wav", "S"}, {"c:\\x\\locked", ""}};
  files.locked = {"c:\\x\\locked"};
  EXPECT_EQ(Runs("copy('c:\\x\\a.txt',d:\\to)\ncopy('c:\\x\\a.txt',d:\\end\\)\n"
                 "move('c:\\x\\b.txt')\nplaysound('c:\\x\\s.wav')\n"
                 "move('c:\\x\\locked',d:)\ndelete('c:\\x\\locked')\n"
                 "delete('c:\\x\\a.txt')\ndelete('c:\\x\\a.txt')"),
            Texts{})
      << "the sound is only copied";
  const std::string log =
      "\"s.txt, line 5: File: c:\\x\\locked could not be copied to d:\\locked: It is locked.\"\r\n"
      "\"s.txt, line 6: File: c:\\x\\locked could not be deleted: It is locked.\"\r\n";
  EXPECT_EQ(Files(), (Texts{"C:\\Orvanto\\ORVSCRPT.LOG " + log, "C:\\Orvanto\\\\b.txt B",
                            "C:\\Orvanto\\\\s.wav S", "C:\\x\\s.wav S", "c:\\x\\locked ",
                            "d:\\end\\\\a.txt A", "d:\\to\\a.txt A"}));
}

TEST_F(Commands, WhereCaseTellsFilesApartTheGivenSpellingWins) {
  files.tellsCaseApart = true;
  files.listings["z:\\y\\"] = {"Z.txt", "z.txt"};
  for (const char* path : {"z:\\x\\A", "z:\\x\\a", "z:\\x\\B", "z:\\x\\b", "z:\\to\\A",
                           "z:\\y\\Z.txt", "z:\\y\\z.txt", "z:\\x\\Say \"x\""}) {
    files.contents[path] = path;
  }
  Script("S.TXT", "");
  EXPECT_EQ(Runs("copy('z:\\x\\A',z:\\to)\nmove('z:\\x\\B',z:\\to)\nfinddelete('z.txt',z:\\y)\n"
                 "open('z:\\x\\A')\nopenwait('z:\\x\\SAY \"x\"')"),
            (Texts{"open z:\\x\\A in '0' 1", "wait for z:\\x\\SAY \"x\" 1"}));
  EXPECT_EQ(RunByPath("S.TXT"), 0);
  EXPECT_EQ(Files(),
            (Texts{"C:\\Orvanto\\scripts\\S.TXT ", "z:\\to\\A z:\\x\\A", "z:\\to\\b z:\\x\\B",
                   "z:\\x\\A z:\\x\\A", "z:\\x\\Say \"x\" z:\\x\\Say \"x\"", "z:\\x\\a z:\\x\\a",
                   "z:\\x\\b z:\\x\\b", "z:\\y\\z.txt z:\\y\\z.txt"}));
}

TEST_F(Commands, ARefusedMessageBoxEndsTheScript) {
  for (const auto& [buttons, answer, shown] :
       {std::tuple{"okcancel", Answer::Cancel, Buttons::OkCancel},
        {"yesno", Answer::No, Buttons::YesNo}}) {
    messageBoxes.expected = {{"a"}, {"b"}, {"c", Answer::Yes}, {"d", answer}};
    EXPECT_EQ(Runs("msgbox('x',OkCancel)\nmsgbox('p',nostop)\nmsgbox('a')\nmsgbox('b',okcancel)\n"
                   "msgbox('c',yesno)\nmsgbox('d'," +
                   std::string(buttons) + ")\nbeep()"),
              Texts{"pop p"});
    EXPECT_EQ(messageBoxes.buttonsShown, shown);
    EXPECT_FALSE(scripts.Slot(1).inUse);
  }
}

TEST_F(Commands, TheTableHoldsEveryCommandOfTheManual) {
  std::ifstream manual(ORVANTO_SOURCE_DIR "/docs/script-language.md");
  std::set<std::string> described;
  for (std::string line; std::getline(manual, line);) {
    // "### `word(...)`"
    if (line.starts_with("### `")) described.insert(line.substr(5, line.find('(') - 5));
  }
  const Texts words = ScriptCommands::Words();
  EXPECT_EQ(described, std::set<std::string>(words.begin(), words.end()));
}

struct FileFinderTest : testing::Test, ScriptDesk {
  void Tree(std::map<std::string, Texts> listings) {
    for (const auto& [path, entries] : listings) {
      for (const std::string& entry : entries) {
        if (!entry.ends_with('\\')) files.contents[path + entry] = "";
      }
    }
    files.listings = std::move(listings);
  }
};

TEST_F(FileFinderTest, SearchesLevelByLevelAndActsOnOneFileOfEachFolder) {
  Tree({{"c:\\", {"docs\\", "a.txt", "deep\\", "Z.TXT", "late\\", "z.txt"}},
        {"c:\\docs\\", {"sub\\", "z.txt"}},
        {"c:\\deep\\", {"link@", "z.txt@", "sub\\"}},
        {"c:\\deep\\link\\", {"z.txt"}},
        {"c:\\late\\", {"z.txt"}},  // listed after the hit, so not searched
        {"c:\\docs\\sub\\", {"z.txt"}},
        {"c:\\deep\\sub\\", {"xz.txt", "z.txt"}}});
  for (const std::string start : {"c:\\", "c:"}) {
    EXPECT_EQ(Runs("findopen('z.txt'," + start + ")"),
              (Texts{"open c:\\z.txt in '0' 1", "open c:\\docs\\z.txt in '0' 1",
                     "open c:\\docs\\sub\\z.txt in '0' 1", "open c:\\deep\\sub\\z.txt in '0' 1"}));
  }
  EXPECT_EQ(Runs("findload('z.txt',c:\\late)\nfindprint('z.txt',c:\\late)\n"
                 "findloadwait('z.txt',c:\\late)\nfindopenwait('z.txt',c:\\late)\n"
                 "findopen('*.txt',c:\\late)\nfindopen('z.txt',c:\\none)\n"
                 "finddelete('Z.txt',c:\\late)"),
            (Texts{"open c:\\late\\z.txt in '0' 1", "print c:\\late\\z.txt in '0' 1",
                   "wait for \"c:\\late\\z.txt\" 1", "wait for \"c:\\late\\z.txt\" 1"}));
  EXPECT_FALSE(files.Exists("c:\\late\\z.txt"));
}

TEST_F(FileFinderTest, OtherEventsRunBeforeEveryEntry) {
  Tree({{"c:\\", {"one\\", "z.txt"}}, {"c:\\one\\", {"z.txt"}}, {"d:\\", {"y.txt"}}});
  // A search that starts in there shares the queue of folders, and searches what waits in it.
  loop.Post([&] { search.FindAndAct("d:\\", "y.txt", FileCode::Open); });
  search.FindAndAct("c:\\", "z.txt", FileCode::Open);
  EXPECT_EQ(Done(), (Texts{"open d:\\y.txt in '0' 1", "open c:\\z.txt in '0' 1"}));
  loop.Post([&] { loop.Quit(); });
  search.FindAndAct("c:\\one\\", "z.txt", FileCode::Open);
  EXPECT_TRUE(done.empty()) << "the program has ended";
}

TEST_F(Commands, ThoseOfWindowsDoTheirSteps) {
  desktop.titles = {"Untitled - Notepad", "", "Other"};
  EXPECT_EQ(Runs("setfocus('notepad')\nminimize('NOTEPAD')\nmaximize('*Notepad*')\n"
                 "closewin('Note')\nsendkeys('Notepad',+a~)\nsendkeysdos('Notepad',dir {x)\n"
                 "setfocus('Nothing')"),
            (Texts{"top 0", "show 1 0", "top 0", "show 2 0", "top 0", "show 3 0", "send 0 61536 0",
                   "top 0", "show 1 0", "top 0", "show 1 0"}));
  EXPECT_EQ(clipboard.text, "dir {x");
  clipboard.taken = true;
  EXPECT_EQ(RunText("sendkeysdos('Notepad',dir)"), 0);
  EXPECT_EQ(
      Log(),
      "\"s.txt, line 1: Window: Untitled - Notepad was sent nothing: the clipboard could not be "
      "written\"\r\n");
  EXPECT_THROW(windows.WindowAction("Notepad", WindowCode::SendKeys, "abc{"), Error);
  EXPECT_TRUE(done.empty()) << "nor where the keys do not parse";
  for (const WindowCode code : {WindowCode::CloseFile, WindowCode::Exit, WindowCode::Hide})
    windows.WindowAction("Other", code, "");
  EXPECT_EQ(Done(), (Texts{"top 2", "show 1 2", "top 2", "show 1 2", "top 2", "show 0 2"}));
  for (const char* keys : {"+a~", "%{ }ep", "%fc", "%fx"}) {
    EXPECT_EQ(keyboard.typed.front(), ParseKeySequence(keys));
    keyboard.typed.erase(keyboard.typed.begin());
  }
  desktop.closes = true;
  windows.WindowAction("other", WindowCode::Close, "");
  EXPECT_EQ(Done(), (Texts{"send 0 61536 2", "send 2 0 2"})) << "left without a title";
}

TEST_F(Commands, ATitleIsActedOnOnceForEachPlace) {
  const std::pair<const char*, const char*> cases[] = {{"aa", "001"},       {"*aa*", "001"},
                                                       {"**aa**", ""},      {"*aa", ""},
                                                       {"", "00001113333"}, {"\xC3\xA4", "3"}};
  desktop.titles = {"Aaa", "aA", "", "\xC3\x84xx"};
  for (const auto& [argument, expected] : cases) {
    windows.WindowAction(argument, WindowCode::SetFocus, "");
    std::string windowsOnTop;
    for (const std::string& one : Done())
      windowsOnTop += one.starts_with("top ") ? one.substr(4) : "";
    EXPECT_EQ(windowsOnTop, expected) << argument;
  }
  loop.Post([&] { loop.Quit(); });
  windows.WindowAction("aa", WindowCode::SetFocus, "");
  EXPECT_EQ(done, (Texts{"top 0", "show 1 0", "top 0", "show 1 0"})) << "the program has ended";
}

TEST_F(Runner, RunsTheScriptsThatAreShipped) {
  messageBoxes.answersAll = true;
  for (const auto& sample : std::filesystem::directory_iterator(ORVANTO_SOURCE_DIR "/scripts")) {
    std::ifstream text(sample.path(), std::ios::binary);
    EXPECT_EQ(RunText({std::istreambuf_iterator<char>(text), {}}), 0) << sample.path();
  }
}

// In short: "S+" Shift held, "S-" released, "a" a character, "<tab>" a key, "*3" three times.
std::string Short(const std::vector<KeyEvent>& events) {
  const std::map<Key, const char*> names{{Key::Shift, "S"},     {Key::Control, "C"},
                                         {Key::Alt, "A"},       {Key::Enter, "<enter>"},
                                         {Key::Left, "<left>"}, {Key::Tab, "<tab>"},
                                         {Key::F1, "<f1>"},     {Key::F16, "<f16>"},
                                         {Key::Character, ""},  {Key::Backspace, "<backspace>"}};
  std::string text;
  for (const KeyEvent& event : events) {
    text += (text.empty() ? "" : " ") + std::string(names.at(event.key));
    if (event.key == Key::Character) AppendUtf8(event.character, text);
    if (event.action != KeyEvent::Action::Press) {
      text += event.action == KeyEvent::Action::Hold ? "+" : "-";
    }
    if (event.count != 1) text += "*" + std::to_string(event.count);
  }
  return text;
}

void Reads(std::initializer_list<std::string> rows) {
  for (const std::string& row : rows) {
    const std::size_t arrow = row.find(" => ");
    EXPECT_EQ(Short(ParseKeySequence(row.substr(0, arrow))), row.substr(arrow + 4)) << row;
  }
}

TEST(KeySequence, ReadsTheNotation) {
  Reads({" => ", "aB1 [ => a B 1   [", "~{Enter} => <enter> <enter>", "+EC => S+ E S- C",
         "+(EC) => S+ E C S-", "^a^c => C+ a C- C+ c C-", "+^%x => S+ C+ A+ x A- C- S-",
         "^(a%(c))d => C+ a A+ c A- C- d", "+ => S+ S-", "a^ => a C+ C-", "(+) => S+ S-",
         "+() => S+ S-"});
  Reads({"{LEFT 42} => <left>*42", "+{TAB 4} => S+ <tab>*4 S-", "{} 3} => }*3", "{ } =>  ",
         "{  2} =>  *2", "{a 0} => ", "{a 99999999999} => a*10000", "{F1}{f16} => <f1> <f16>",
         "{BKSP} => <backspace>", "\xE4 => \xC3\xA4", "{+}{^}{%}{~}{(} => + ^ % ~ (",
         "{)}{{}{}}{[}{]} => ) { } [ ]", "{€ 2}😀 => €*2 😀"});
  for (const char* text :
       {"}",     "a}",    "{",       "{a",     "{}",     "{abc}",    "{F0}", "{F17}",
        "{F01}", "{a x}", "{a 1 2}", "{a -1}", "{a }",   "{LEFT x}", ")",    "(a))",
        "(",     "+(a",   "++a",     "+(+a)",  "^(b^c)", "{ENTER",   "{3 {}"}) {
    EXPECT_THROW(ParseKeySequence(text), Error) << text;
  }
}

}  // namespace
}  // namespace orvanto
