#include "script/Commands.h"
#include "platform/text/Error.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

class Commands : public testing::Test, public ScriptDesk {};

TEST_F(Commands, SimpleOnesReachTheirService) {
  EXPECT_EQ(RunText("changeres(1)\nchangeres(2)\nchangeres('3')\nchangeres(4)\nchangeres(-1)\n"
                    "sdown(5)\nshutdown()\nreset()\nhangup()\ndialout('My ISP')\nbeep()\n"
                    "download('http://x/y',z)"),
            0);
  EXPECT_EQ(Done(),
            (Texts{"size 640x480", "size 800x600", "size 1024x768", "size 0x0", "size 0x0", "end 5",
                   "end 1", "end 2", "hang up", "start rundll rnaui.dll,RnaDial My ISP", "beep",
                   "download http://x/y z"}));
}

TEST_F(Commands, FilesAreOpenedPrintedAndWaitedFor) {
  files.contents["C:\\D\\A.txt"] = "";
  // No style, then the ends of the table of styles.
  EXPECT_EQ(RunText("open('c:\\d\\a.TXT')\nload(' C:\\D\\A.txt ',3)\nprint('c:\\d\\a.txt')\n"
                    "openwait('c:\\d\\a.txt',6)\nloadwait(c:\\d\\a.txt)\n"
                    "open('c:\\d\\a.txt',0)\nopen('c:\\d\\a.txt',7)"),
            0);
  EXPECT_EQ(Done(), (Texts{"open c:\\d\\a.txt in '0' 1", "open c:\\d\\a.txt in '0' 3",
                           "print c:\\d\\a.txt in '0' 1", "wait for \"c:\\d\\a.txt\" 0",
                           "wait for \"c:\\d\\a.txt\" 1", "open c:\\d\\a.txt in '0' 1",
                           "open c:\\d\\a.txt in '0' 0"}));
  EXPECT_EQ(RunText("open('a.txt',x)\nopen('c:\\nowhere\\a.txt',x)\nopen('c:\\d\\',x)"), 0)
      << "what is not there is passed over before anything else";
  EXPECT_EQ(RunText("open('c:\\d\\a.txt',x)"), kFileAlreadyOpen);
}

TEST_F(Commands, FilesAreCopiedMovedAndDeleted) {
  files.contents = {
      {"C:\\x\\a.txt", "A"}, {"C:\\x\\b.txt", "B"}, {"C:\\x\\s.wav", "S"}, {"c:\\x\\locked", ""}};
  files.locked = {"c:\\x\\locked"};
  EXPECT_EQ(RunText("copy('c:\\x\\a.txt',d:\\to)\ncopy('c:\\x\\a.txt',d:\\end\\)\n"
                    "move('c:\\x\\b.txt')\nplaysound('c:\\x\\s.wav')\n"
                    "move('c:\\x\\locked',d:)\ndelete('c:\\x\\locked')\n"
                    "delete('c:\\x\\a.txt')\ndelete('c:\\x\\a.txt')"),
            0);
  const std::string log =
      "\"s.txt, line 5: File: c:\\x\\locked could not be copied to d:\\locked: It is locked.\"\r\n"
      "\"s.txt, line 6: File: c:\\x\\locked could not be deleted: It is locked.\"\r\n";
  EXPECT_EQ(Files(), (Texts{"C:\\Orvanto\\ORVSCRPT.LOG " + log, "C:\\Orvanto\\\\b.txt B",
                            "C:\\Orvanto\\\\s.wav S", "C:\\x\\s.wav S", "c:\\x\\locked ",
                            "d:\\end\\\\a.txt A", "d:\\to\\a.txt A"}));
  EXPECT_TRUE(done.empty()) << "the sound is only copied";
}

TEST_F(Commands, WhereCaseTellsFilesApartTheGivenSpellingWins) {
  files.tellsCaseApart = true;
  files.listings["z:\\y\\"] = {"Z.txt", "z.txt"};
  for (const char* path : {"z:\\x\\A", "z:\\x\\a", "z:\\x\\B", "z:\\x\\b", "z:\\to\\A",
                           "z:\\y\\Z.txt", "z:\\y\\z.txt", "z:\\x\\Say \"x\""}) {
    files.contents[path] = path;
  }
  Script("S.TXT", "");
  EXPECT_EQ(RunText("copy('z:\\x\\A',z:\\to)\nmove('z:\\x\\B',z:\\to)\nfinddelete('z.txt',z:\\y)\n"
                    "open('z:\\x\\A')\nopenwait('z:\\x\\SAY \"x\"')"),
            0);
  EXPECT_EQ(RunByPath("S.TXT"), 0);
  EXPECT_EQ(Files(),
            (Texts{"C:\\Orvanto\\scripts\\S.TXT ", "z:\\to\\A z:\\x\\A", "z:\\to\\b z:\\x\\B",
                   "z:\\x\\A z:\\x\\A", "z:\\x\\Say \"x\" z:\\x\\Say \"x\"", "z:\\x\\a z:\\x\\a",
                   "z:\\x\\b z:\\x\\b", "z:\\y\\z.txt z:\\y\\z.txt"}));
  EXPECT_EQ(Done(), (Texts{"open z:\\x\\A in '0' 1", "wait for z:\\x\\SAY \"x\" 1"}));
}

TEST_F(Commands, ARefusedMessageBoxEndsTheScript) {
  for (const auto& [buttons, answer] :
       {std::pair{"okcancel", Answer::Cancel}, {"yesno", Answer::No}}) {
    ScriptDesk desk;
    desk.messageBoxes.expected = {{"a"}, {"b"}, {"c", Answer::Yes}, {"d", answer}};
    EXPECT_EQ(desk.RunText("msgbox('x',OkCancel)\nmsgbox('p',nostop)\nmsgbox('a')\n"
                           "msgbox('b',okcancel)\nmsgbox('c',yesno)\nmsgbox('d'," +
                           std::string(buttons) + ")\nbeep()"),
              0);
    EXPECT_TRUE(desk.done.empty()) << buttons;
    EXPECT_EQ(desk.messageBoxes.buttonsShown,
              answer == Answer::No ? Buttons::YesNo : Buttons::OkCancel);
    EXPECT_EQ(desk.popups, (Texts{"p"}));
    EXPECT_FALSE(desk.scripts.Slot(1).inUse);
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

}  // namespace
}  // namespace orvanto
