// The scripts that are shipped, each run for what it says it does.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "script/KeySequence.h"
#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

class Samples : public testing::Test {
 protected:
  Samples() {
    desk.files.contents = {{"c:\\orvanto-samples\\work\\report.txt", "report"},
                           {"c:\\orvanto-samples\\work\\orders.txt", "orders"},
                           {"c:\\orvanto-samples\\note.txt", "note"},
                           {"c:\\orvanto-samples\\draft.tmp", ""},
                           {"c:\\orvanto-samples\\work\\old.tmp", ""}};
    desk.files.listings = {{"c:\\orvanto-samples\\", {"work\\", "draft.tmp"}},
                           {"c:\\orvanto-samples\\work\\", {"old.tmp", "report.txt"}}};
    desk.desktop.titles = {"note - Notepad", "Calculator"};
  }
  ~Samples() override {
    EXPECT_EQ(desk.Log(), "");
    EXPECT_FALSE(desk.scripts.Waiting());
  }
  int RunSample(const std::string& name) {
    std::ifstream file(ORVANTO_SOURCE_DIR "/scripts/" + name, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    EXPECT_FALSE(text.str().empty()) << name;
    desk.Script(name, text.str());
    return desk.RunByPath(name);
  }
  bool Has(const std::string& path) { return desk.files.Exists("c:\\orvanto-samples\\" + path); }

  ScriptDesk desk;
};

TEST_F(Samples, Backup) {
  EXPECT_EQ(RunSample("backup.txt"), 0);
  EXPECT_TRUE(Has("backup\\report.txt"));
  EXPECT_TRUE(Has("backup\\orders.txt"));
  EXPECT_EQ(desk.popups.size(), 1U);
}

TEST_F(Samples, CleanupAsksFirst) {
  desk.messageBoxes.expected = {{"Delete the temporary files?", Answer::No}};
  EXPECT_EQ(RunSample("cleanup.txt"), 0);
  EXPECT_TRUE(Has("draft.tmp"));
  desk.messageBoxes.expected = {{"Delete the temporary files?", Answer::Yes}};
  EXPECT_EQ(RunSample("cleanup.txt"), 0);
  EXPECT_FALSE(Has("draft.tmp"));
  EXPECT_FALSE(Has("work\\old.tmp"));
  EXPECT_TRUE(Has("work\\report.txt"));
}

TEST_F(Samples, NoteIsTypedSavedAndClosed) {
  desk.messageBoxes.expected = {{"Write the note now?", Answer::Ok}};
  EXPECT_EQ(RunSample("note.txt"), 0);
  ASSERT_FALSE(desk.done.empty());
  EXPECT_EQ(desk.done[0], "open c:\\orvanto-samples\\note.txt in '0' 1");
  ASSERT_EQ(desk.keyboard.typed.size(), 3U);
  EXPECT_EQ(desk.keyboard.typed[1], ParseKeySequence("^s"));
  EXPECT_EQ(desk.keyboard.typed[2], ParseKeySequence("%{F4}"));
}

TEST_F(Samples, QuestionMovesTheOrders) {
  desk.messageBoxes.expected = {{"The new orders will be moved now.", Answer::Ok},
                                {"The orders have been moved."}};
  EXPECT_EQ(RunSample("question.txt"), 0);
  EXPECT_FALSE(Has("work\\orders.txt"));
  EXPECT_TRUE(Has("done\\orders.txt"));
}

TEST_F(Samples, TidyDesk) {
  EXPECT_EQ(RunSample("tidy-desk.txt"), 0);
  EXPECT_EQ(desk.done, (Texts{"top 1", "show 2 1", "top 0", "show 3 0", "top 0", "show 1 0"}));
}

}  // namespace
}  // namespace orvanto
