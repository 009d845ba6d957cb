#include "script/FileFinder.h"

#include <gtest/gtest.h>

#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

void Tree(ScriptDesk& desk, std::map<std::string, Texts> listings) {
  for (const auto& [folder, entries] : listings) {
    for (const std::string& entry : entries) {
      if (!entry.ends_with('\\')) desk.files.contents[folder + entry] = "";
    }
  }
  desk.files.listings = std::move(listings);
}

TEST(FileFinder, SearchesLevelByLevelAndActsOnOneFileOfEachFolder) {
  ScriptDesk desk;
  Tree(desk, {{"c:\\", {"docs\\", "a.txt", "deep\\", "Z.TXT", "late\\", "z.txt"}},
              {"c:\\docs\\", {"sub\\", "z.txt"}},
              {"c:\\deep\\", {"link@", "z.txt@", "sub\\"}},
              {"c:\\deep\\link\\", {"z.txt"}},
              {"c:\\late\\", {"z.txt"}},  // listed after the hit, so not searched
              {"c:\\docs\\sub\\", {"z.txt"}},
              {"c:\\deep\\sub\\", {"xz.txt", "z.txt"}}});
  for (const char* start : {"c:\\", "c:"}) {
    desk.done.clear();
    EXPECT_EQ(desk.Run(std::string("findopen('z.txt',") + start + ")"), 0);
    EXPECT_EQ(desk.done,
              (Texts{"open c:\\z.txt in '0' 1", "open c:\\docs\\z.txt in '0' 1",
                     "open c:\\docs\\sub\\z.txt in '0' 1", "open c:\\deep\\sub\\z.txt in '0' 1"}));
  }
  desk.done.clear();
  EXPECT_EQ(desk.Run("findload('z.txt',c:\\late)\nfindprint('z.txt',c:\\late)\n"
                     "findloadwait('z.txt',c:\\late)\nfindopenwait('z.txt',c:\\late)\n"
                     "findopen('*.txt',c:\\late)\nfindopen('z.txt',c:\\none)\n"
                     "finddelete('Z.txt',c:\\late)"),
            0);
  EXPECT_EQ(desk.done, (Texts{"open c:\\late\\z.txt in '0' 1", "print c:\\late\\z.txt in '0' 1",
                              "wait for \"c:\\late\\z.txt\" 1", "wait for \"c:\\late\\z.txt\" 1"}));
  EXPECT_EQ(desk.files.contents.count("c:\\late\\z.txt"), 0U);
}

TEST(FileFinder, OtherEventsRunBeforeEveryEntry) {
  ScriptDesk desk;
  Tree(desk, {{"c:\\", {"one\\", "z.txt"}}, {"c:\\one\\", {"z.txt"}}, {"d:\\", {"y.txt"}}});
  // A search that starts in there shares the queue of folders, and searches what waits in it.
  desk.loop.Post([&] { desk.search.FindAndAct("d:\\", "y.txt", FileCode::Open); });
  desk.search.FindAndAct("c:\\", "z.txt", FileCode::Open);
  EXPECT_EQ(desk.done, (Texts{"open d:\\y.txt in '0' 1", "open c:\\z.txt in '0' 1"}));
  desk.done.clear();
  desk.loop.Post([&] { desk.loop.Quit(); });
  desk.search.FindAndAct("c:\\one\\", "z.txt", FileCode::Open);
  EXPECT_TRUE(desk.done.empty()) << "the program has ended";
}

}  // namespace
}  // namespace orvanto
