#include "script/Commands.h"
#include "platform/text/Error.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

TEST(Commands, SimpleOnesReachTheirService) {
  ScriptDesk desk;
  EXPECT_EQ(desk.Run("changeres(1)\nchangeres(2)\nchangeres('3')\nchangeres(4)\nchangeres(-1)\n"
                     "sdown(5)\nshutdown()\nreset()\nhangup()\ndialout('My ISP')\nbeep()\n"
                     "download('http://x/y',z)"),
            0);
  EXPECT_EQ(desk.done,
            (Texts{"size 640x480", "size 800x600", "size 1024x768", "size 0x0", "size 0x0", "end 5",
                   "end 1", "end 2", "hang up", "start rundll rnaui.dll,RnaDial My ISP", "beep"}));
  EXPECT_NE(desk.Log().find("http://x/y"), std::string::npos);
}

TEST(Commands, FilesAreOpenedPrintedAndWaitedFor) {
  ScriptDesk desk;
  desk.files.contents["C:\\Data\\A.txt"] = "";
  std::string script =
      "open('c:\\data\\a.TXT')\nload(' C:\\Data\\A.txt ',9)\nprint('c:\\data\\a.txt')\n"
      "openwait('c:\\data\\a.txt',6)\nloadwait(c:\\data\\a.txt)\n";
  Texts expected{"open c:\\data\\a.txt in '0' 1", "open c:\\data\\a.txt in '0' 0",
                 "print c:\\data\\a.txt in '0' 1", "wait for \"c:\\data\\a.txt\" 0",
                 "wait for \"c:\\data\\a.txt\" 1"};
  const int states[] = {1, 1, 2, 3, 4, 7, 0, 0};
  for (int style = 0; style <= 7; ++style) {
    script += "open('c:\\data\\a.txt'," + std::to_string(style) + ")\n";
    expected.push_back("open c:\\data\\a.txt in '0' " + std::to_string(states[style]));
  }
  EXPECT_EQ(desk.Run(script), 0);
  EXPECT_EQ(desk.done, expected);
  EXPECT_EQ(desk.Run("open('a.txt',x)\nopen('c:\\nowhere\\a.txt',x)\nopen('c:\\data\\',x)"), 0)
      << "what is not there is passed over before anything else";
  EXPECT_EQ(desk.Run("open('c:\\data\\a.txt',x)"), kFileAlreadyOpen);
}

TEST(Commands, FilesAreCopiedMovedAndDeleted) {
  ScriptDesk desk;
  auto& files = desk.files.contents;
  files = {
      {"C:\\x\\a.txt", "A"}, {"C:\\x\\b.txt", "B"}, {"C:\\x\\s.wav", "S"}, {"c:\\x\\locked", ""}};
  desk.files.locked = {"c:\\x\\locked"};
  EXPECT_EQ(desk.Run("copy('c:\\x\\a.txt',d:\\backup)\ncopy('c:\\x\\a.txt',d:\\end\\)\n"
                     "move('c:\\x\\b.txt')\nplaysound('c:\\x\\s.wav')\n"
                     "move('c:\\x\\locked',d:)\ndelete('c:\\x\\locked')\n"
                     "delete('c:\\x\\a.txt')\ndelete('c:\\x\\a.txt')"),
            0);
  files.erase("C:\\Orvanto\\scripts\\s.txt");
  const std::string log = desk.Log();
  files.erase("C:\\Orvanto\\ORVSCRPT.LOG");
  EXPECT_EQ(files, (std::map<std::string, std::string>{{"C:\\Orvanto\\\\b.txt", "B"},
                                                       {"C:\\Orvanto\\\\s.wav", "S"},
                                                       {"C:\\x\\s.wav", "S"},
                                                       {"c:\\x\\locked", ""},
                                                       {"d:\\backup\\a.txt", "A"},
                                                       {"d:\\end\\\\a.txt", "A"}}));
  EXPECT_EQ(
      log,
      "\"s.txt, line 5: File: c:\\x\\locked could not be copied to d:\\locked: It is locked.\"\r\n"
      "\"s.txt, line 6: File: c:\\x\\locked could not be deleted: It is locked.\"\r\n");
  EXPECT_TRUE(desk.done.empty()) << "the sound is only copied";
}

TEST(Commands, WhereCaseTellsFilesApartTheGivenSpellingWins) {
  ScriptDesk desk;
  desk.files.tellsCaseApart = true;
  desk.files.listings["z:\\y\\"] = {"Z.txt", "z.txt"};
  auto& files = desk.files.contents;
  files = {{"z:\\x\\A", "right"}, {"z:\\x\\a", "a"},     {"z:\\x\\B", "right"},
           {"z:\\x\\b", "b"},     {"z:\\x\\C", ""},      {"z:\\x\\c", "c"},
           {"z:\\to\\A", "old"},  {"z:\\to\\a", "a"},    {"z:\\x\\Say \"x\"", ""},
           {"z:\\y\\Z.txt", ""},  {"z:\\y\\z.txt", "z"}, {"C:\\Orvanto\\scripts\\S.TXT", ""}};
  EXPECT_EQ(desk.Run("copy('z:\\x\\A',z:\\to)\nmove('z:\\x\\B',z:\\to)\ndelete('z:\\x\\C')\n"
                     "finddelete('z.txt',z:\\y)\nopen('z:\\x\\A')\nopenwait('z:\\x\\SAY \"x\"')"),
            0);
  EXPECT_EQ(desk.RunByPath("S.TXT"), 0);
  files.erase("C:\\Orvanto\\scripts\\s.txt");
  EXPECT_EQ(files, (std::map<std::string, std::string>{{"z:\\x\\A", "right"},
                                                       {"z:\\x\\a", "a"},
                                                       {"z:\\x\\b", "b"},
                                                       {"z:\\x\\c", "c"},
                                                       {"z:\\to\\A", "right"},
                                                       {"z:\\to\\a", "a"},
                                                       {"z:\\to\\b", "right"},
                                                       {"z:\\y\\z.txt", "z"},
                                                       {"z:\\x\\Say \"x\"", ""},
                                                       {"C:\\Orvanto\\scripts\\S.TXT", ""}}));
  EXPECT_EQ(desk.done, (Texts{"open z:\\x\\A in '0' 1", "wait for z:\\x\\SAY \"x\" 1"}));
}

TEST(Commands, ARefusedMessageBoxEndsTheScript) {
  for (const auto& [buttons, answer] :
       {std::pair{"okcancel", Answer::Cancel}, {"yesno", Answer::No}}) {
    ScriptDesk desk;
    desk.messageBoxes.expected = {{"a"}, {"b"}, {"c", Answer::Yes}, {"d", answer}};
    EXPECT_EQ(desk.Run("msgbox('x',OkCancel)\nmsgbox('p',nostop)\nmsgbox('a')\n"
                       "msgbox('b',okcancel)\nmsgbox('c',yesno)\nmsgbox('d'," +
                       std::string(buttons) + ")\nbeep()"),
              0);
    EXPECT_TRUE(desk.done.empty()) << buttons;
    EXPECT_EQ(desk.popups, (Texts{"p"}));
    EXPECT_FALSE(desk.scripts.Slot(1).inUse);
  }
}

TEST(Commands, TheTableHoldsEveryCommandOfTheManual) {
  std::ifstream manual(ORVANTO_SOURCE_DIR "/docs/script-language.md");
  std::set<std::string> described;
  for (std::string line; std::getline(manual, line);) {
    // "### `word(...)`"
    if (line.starts_with("### `")) described.insert(line.substr(5, line.find('(') - 5));
  }
  const Texts words = ScriptCommands::Words();
  EXPECT_EQ(described, std::set<std::string>(words.begin(), words.end()));
  EXPECT_EQ(words.size(), 31U);
}

}  // namespace
}  // namespace orvanto
