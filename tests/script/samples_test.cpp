// The scripts that are shipped, each run for what it says it does.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "script/KeySequence.h"
#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

struct Samples : testing::Test, ScriptDesk {
  void RunSample(const std::string& name, const decltype(messageBoxes.expected)& boxes = {}) {
    std::ifstream text(ORVANTO_SOURCE_DIR "/scripts/" + name, std::ios::binary);
    messageBoxes.expected = boxes;
    EXPECT_EQ(RunText({std::istreambuf_iterator<char>(text), {}}), 0);
  }
  const std::string top = "c:\\orvanto-samples\\";
};

TEST_F(Samples, MoveAndDeleteFiles) {
  for (const char* file : {"work\\report.txt", "work\\orders.txt", "work\\old.tmp", "draft.tmp"}) {
    files.contents[top + file] = "";
  }
  files.listings = {{top, {"work\\", "draft.tmp"}}, {top + "work\\", {"old.tmp", "report.txt"}}};
  RunSample("backup.txt");
  EXPECT_EQ(popups.size(), 1U);
  for (const Answer answer : {Answer::No, Answer::Yes}) {
    EXPECT_EQ(Files().size(), 6U);
    RunSample("cleanup.txt", {{"Delete the temporary files?", answer}});
  }
  RunSample("question.txt",
            {{"The new orders will be moved now."}, {"The orders have been moved."}});
  EXPECT_EQ(Files(), (Texts{top + "backup\\orders.txt ", top + "backup\\report.txt ",
                            top + "done\\orders.txt ", top + "work\\report.txt "}));
}

TEST_F(Samples, ActOnOtherPrograms) {
  desktop.titles = {"note - Notepad", "Calculator"};
  RunSample("tidy-desk.txt");
  EXPECT_EQ(Done(), (Texts{"top 1", "show 2 1", "top 0", "show 3 0", "top 0", "show 1 0"}));
  files.contents[top + "note.txt"] = "";
  RunSample("note.txt", {{"Write the note now?"}});
  EXPECT_EQ(done.at(0), "open " + top + "note.txt in '0' 1");
  ASSERT_EQ(keyboard.typed.size(), 3U);
  EXPECT_EQ(keyboard.typed[1], ParseKeySequence("^s"));
  EXPECT_EQ(keyboard.typed[2], ParseKeySequence("%{F4}"));
}

}  // namespace
}  // namespace orvanto
