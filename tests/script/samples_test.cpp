// The scripts that are shipped, each run for what it says it does.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "script/KeySequence.h"
#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

class Samples : public testing::Test, public ScriptDesk {
 protected:
  Samples() {
    for (const char* file :
         {"work\\report.txt", "work\\orders.txt", "work\\old.tmp", "draft.tmp"}) {
      files.contents[std::string("c:\\orvanto-samples\\") + file] = "";
    }
    files.listings = {{"c:\\orvanto-samples\\", {"work\\", "draft.tmp"}},
                      {"c:\\orvanto-samples\\work\\", {"old.tmp", "report.txt"}}};
  }
  void RunSample(const std::string& name, const decltype(messageBoxes.expected)& boxes = {}) {
    std::stringstream text;
    text << std::ifstream(ORVANTO_SOURCE_DIR "/scripts/" + name, std::ios::binary).rdbuf();
    ASSERT_FALSE(text.str().empty()) << name;
    Script(name, text.str());
    messageBoxes.expected = boxes;
    EXPECT_EQ(RunByPath(name), 0);
    EXPECT_EQ(Log(), "");
    EXPECT_FALSE(scripts.Waiting());
  }
  bool Has(const std::string& path) { return files.Exists("c:\\orvanto-samples\\" + path); }
};

TEST_F(Samples, MoveAndDeleteFiles) {
  RunSample("backup.txt");
  EXPECT_TRUE(Has("backup\\report.txt") && Has("backup\\orders.txt"));
  EXPECT_EQ(popups.size(), 1U);
  for (const Answer answer : {Answer::No, Answer::Yes}) {
    RunSample("cleanup.txt", {{"Delete the temporary files?", answer}});
    EXPECT_EQ(Has("draft.tmp") && Has("work\\old.tmp"), answer == Answer::No);
  }
  RunSample("question.txt",
            {{"The new orders will be moved now."}, {"The orders have been moved."}});
  EXPECT_TRUE(Has("done\\orders.txt") && Has("work\\report.txt"));
  EXPECT_FALSE(Has("work\\orders.txt") || Has("draft.tmp") || Has("work\\old.tmp"));
}

TEST_F(Samples, ActOnOtherPrograms) {
  desktop.titles = {"note - Notepad", "Calculator"};
  RunSample("tidy-desk.txt");
  EXPECT_EQ(Done(), (Texts{"top 1", "show 2 1", "top 0", "show 3 0", "top 0", "show 1 0"}));
  files.contents["c:\\orvanto-samples\\note.txt"] = "";
  RunSample("note.txt", {{"Write the note now?"}});
  EXPECT_EQ(done.at(0), "open c:\\orvanto-samples\\note.txt in '0' 1");
  ASSERT_EQ(keyboard.typed.size(), 3U);
  EXPECT_EQ(keyboard.typed[1], ParseKeySequence("^s"));
  EXPECT_EQ(keyboard.typed[2], ParseKeySequence("%{F4}"));
}

}  // namespace
}  // namespace orvanto
