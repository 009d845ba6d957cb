#include "script/FileFinder.h"

#include <gtest/gtest.h>

#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

class FileFinderTest : public testing::Test, public ScriptDesk {
 protected:
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
    EXPECT_EQ(RunText("findopen('z.txt'," + start + ")"), 0);
    EXPECT_EQ(Done(),
              (Texts{"open c:\\z.txt in '0' 1", "open c:\\docs\\z.txt in '0' 1",
                     "open c:\\docs\\sub\\z.txt in '0' 1", "open c:\\deep\\sub\\z.txt in '0' 1"}));
  }
  EXPECT_EQ(RunText("findload('z.txt',c:\\late)\nfindprint('z.txt',c:\\late)\n"
                    "findloadwait('z.txt',c:\\late)\nfindopenwait('z.txt',c:\\late)\n"
                    "findopen('*.txt',c:\\late)\nfindopen('z.txt',c:\\none)\n"
                    "finddelete('Z.txt',c:\\late)"),
            0);
  EXPECT_EQ(Done(), (Texts{"open c:\\late\\z.txt in '0' 1", "print c:\\late\\z.txt in '0' 1",
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

}  // namespace
}  // namespace orvanto
