#include "script/Commands.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

using Texts = std::vector<std::string>;

TEST(Commands, SimpleOnesReachTheirService) {
  ScriptDesk desk;
  EXPECT_EQ(desk.Run("changeres(1)\nchangeres(2)\nchangeres('3')\nchangeres(4)\nchangeres(-1)\n"
                     "sdown(5)\nshutdown()\nreset()\nhangup()\ndialout('My ISP')\nbeep()"),
            0);
  EXPECT_EQ(desk.session.sizes, (Texts{"640x480", "800x600", "1024x768", "0x0", "0x0"}));
  EXPECT_EQ(desk.session.ends, (std::vector<std::uint32_t>{5, 1, 2}));
  EXPECT_EQ(desk.session.hangUps, 1);
  EXPECT_EQ(desk.shell.started, (Texts{"rundll rnaui.dll,RnaDial My ISP"}));
  EXPECT_EQ(desk.sound.beeps, 1);
  EXPECT_EQ(desk.Run("download('http://x/y',z)"), 0);
  EXPECT_NE(desk.Log().find("http://x/y"), std::string::npos);
}

TEST(Commands, FilesAreOpenedPrintedAndWaitedFor) {
  ScriptDesk desk;
  desk.files.contents["C:\\Data\\A.txt"] = "";
  EXPECT_EQ(
      desk.Run("open('c:\\data\\a.TXT')\nload('c:\\data\\a.txt',3)\nopen(' C:\\Data\\A.txt ',9)\n"
               "print('c:\\data\\a.txt')\nopenwait('c:\\data\\a.txt',6)\n"
               "loadwait(c:\\data\\a.txt)"),
      0);
  Texts executed;
  for (const ShellRequest& request : desk.shell.requests) {
    executed.push_back(request.operation + " " + request.file + " [" + request.parameters + "] " +
                       request.directory + " " + std::to_string(static_cast<int>(request.show)));
  }
  EXPECT_EQ(executed, (Texts{"open c:\\data\\a.txt [] 0 1", "open c:\\data\\a.txt [] 0 3",
                             "open c:\\data\\a.txt [] 0 0", "print c:\\data\\a.txt [] 0 1"}));
  EXPECT_EQ(desk.shell.waitedFor, (Texts{"c:\\data\\a.txt 0", "c:\\data\\a.txt 1"}));
  EXPECT_EQ(desk.Run("open('a.txt',x)\nopen('c:\\nowhere\\a.txt',x)\nopen('c:\\data\\',x)"), 0)
      << "what is not there is passed over before anything else";
  EXPECT_EQ(desk.Run("open('c:\\data\\a.txt',x)"), kFileAlreadyOpen);
}

TEST(Commands, ShowStylesMapToShowStates) {
  const int states[] = {1, 1, 2, 3, 4, 7, 0};
  for (std::int16_t style = 0; style <= 6; ++style) {
    EXPECT_EQ(static_cast<int>(*ShowStyleFromCode(style)), states[style]);
  }
  EXPECT_FALSE(ShowStyleFromCode(7).has_value());
  EXPECT_FALSE(ShowStyleFromCode(-1).has_value());
}

TEST(Commands, FilesAreCopiedMovedAndDeleted) {
  ScriptDesk desk;
  auto& files = desk.files.contents;
  files["C:\\x\\a.txt"] = "A";
  files["C:\\x\\b.txt"] = "B";
  files["C:\\x\\s.wav"] = "S";
  EXPECT_EQ(desk.Run("copy('c:\\x\\a.txt',d:\\backup)\ncopy('c:\\x\\a.txt',d:\\end\\)\n"
                     "move('c:\\x\\b.txt')\nplaysound('c:\\x\\s.wav')"),
            0);
  EXPECT_EQ(files.at("d:\\backup\\a.txt"), "A");
  EXPECT_EQ(files.at("d:\\end\\\\a.txt"), "A");
  EXPECT_EQ(files.at("C:\\Orvanto\\\\b.txt"), "B");
  EXPECT_EQ(files.count("C:\\x\\b.txt"), 0U);
  EXPECT_EQ(files.at("C:\\Orvanto\\\\s.wav"), "S");
  EXPECT_TRUE(desk.sound.played.empty()) << "the sound is only copied";
  EXPECT_EQ(desk.Run("delete('c:\\x\\a.txt')\ndelete('c:\\x\\a.txt')"), 0);
  EXPECT_EQ(files.count("C:\\x\\a.txt"), 0U);
  EXPECT_EQ(desk.Log(), "");
}

TEST(Commands, AFileThatResistsIsLoggedAndTheScriptGoesOn) {
  ScriptDesk desk;
  desk.files.contents["c:\\x\\a.txt"] = "A";
  desk.files.locked = {"c:\\x\\a.txt"};
  EXPECT_EQ(desk.Run("move('c:\\x\\a.txt',d:)\ndelete('c:\\x\\a.txt')\nbeep()"), 0);
  EXPECT_EQ(desk.Log(),
            "\"File: c:\\x\\a.txt could not be copied to d:\\a.txt: It is locked.\"\r\n"
            "\"File: c:\\x\\a.txt could not be deleted: It is locked.\"\r\n");
  EXPECT_EQ(desk.files.contents.count("c:\\x\\a.txt"), 1U);
  EXPECT_EQ(desk.sound.beeps, 1);
}

TEST(Commands, MessageBoxesDecideWhetherTheScriptGoesOn) {
  struct Case {
    const char* line;
    Answer answer;
    int beeps;
  };
  for (const Case& c : {Case{"msgbox('q')", Answer::Ok, 1},
                        {"msgbox('q',okcancel)", Answer::Ok, 1},
                        {"msgbox('q',okcancel)", Answer::Cancel, 0},
                        {"msgbox('q',yesno)", Answer::Yes, 1},
                        {"msgbox('q',yesno)", Answer::No, 0}}) {
    ScriptDesk desk;
    desk.messageBoxes.expected = {{"q", c.answer}};
    EXPECT_EQ(desk.Run(std::string(c.line) + "\nbeep()"), 0);
    EXPECT_TRUE(desk.messageBoxes.expected.empty());
    EXPECT_EQ(desk.sound.beeps, c.beeps) << c.line;
    EXPECT_FALSE(desk.scripts.Slot(1).inUse);
  }
  ScriptDesk desk;
  EXPECT_EQ(desk.Run("msgbox('q',OkCancel)\nmsgbox('p',nostop)\nbeep()"), 0);
  EXPECT_EQ(desk.popups, (Texts{"p"}));
  EXPECT_EQ(desk.sound.beeps, 1);
}

TEST(Commands, TheTableHoldsEveryCommandOfTheManual) {
  std::ifstream manual(ORVANTO_SOURCE_DIR "/docs/script-language.md");
  std::set<std::string> described;
  for (std::string line; std::getline(manual, line);) {
    // "### `word(...)`"
    if (line.rfind("### `", 0) == 0) described.insert(line.substr(5, line.find('(') - 5));
  }
  const Texts words = ScriptCommands::Words();
  EXPECT_EQ(described, std::set<std::string>(words.begin(), words.end()));
  EXPECT_EQ(words.size(), 31U);
}

}  // namespace
}  // namespace orvanto
