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
         {"work\\report.txt", "work\\orders.txt", "work\\old.tmp", "note.txt", "draft.tmp"}) {
      files.contents[std::string("c:\\orvanto-samples\\") + file] = "";
    }
    files.listings = {{"c:\\orvanto-samples\\", {"work\\", "draft.tmp"}},
                      {"c:\\orvanto-samples\\work\\", {"old.tmp", "report.txt"}}};
    desktop.titles = {"note - Notepad", "Calculator"};
  }
  ~Samples() override {
    EXPECT_EQ(Log(), "");
    EXPECT_FALSE(scripts.Waiting());
  }
  void RunSample(const std::string& name, const decltype(messageBoxes.expected)& boxes = {}) {
    std::stringstream text;
    text << std::ifstream(ORVANTO_SOURCE_DIR "/scripts/" + name, std::ios::binary).rdbuf();
    ASSERT_FALSE(text.str().empty()) << name;
    Script(name, text.str());
    messageBoxes.expected = boxes;
    EXPECT_EQ(RunByPath(name), 0);
  }
  bool Has(const std::string& path) { return files.Exists("c:\\orvanto-samples\\" + path); }
};

TEST_F(Samples, MoveAndDeleteFiles) {
  RunSample("backup.txt");
  EXPECT_TRUE(Has("backup\\report.txt") && Has("backup\\orders.txt"));
  EXPECT_EQ(popups.size(), 1U);

  RunSample("cleanup.txt", {{"Delete the temporary files?", Answer::No}});
  EXPECT_TRUE(Has("draft.tmp"));
  RunSample("cleanup.txt", {{"Delete the temporary files?", Answer::Yes}});
  EXPECT_FALSE(Has("draft.tmp") || Has("work\\old.tmp"));
  EXPECT_TRUE(Has("work\\report.txt"));

  RunSample("question.txt",
            {{"The new orders will be moved now."}, {"The orders have been moved."}});
  EXPECT_FALSE(Has("work\\orders.txt"));
  EXPECT_TRUE(Has("done\\orders.txt"));
}

TEST_F(Samples, ActOnOtherPrograms) {
  RunSample("tidy-desk.txt");
  EXPECT_EQ(done, (Texts{"top 1", "show 2 1", "top 0", "show 3 0", "top 0", "show 1 0"}));
  done.clear();
  RunSample("note.txt", {{"Write the note now?"}});
  EXPECT_EQ(done.at(0), "open c:\\orvanto-samples\\note.txt in '0' 1");
  ASSERT_EQ(keyboard.typed.size(), 3U);
  EXPECT_EQ(keyboard.typed[1], ParseKeySequence("^s"));
  EXPECT_EQ(keyboard.typed[2], ParseKeySequence("%{F4}"));
}

}  // namespace
}  // namespace orvanto
