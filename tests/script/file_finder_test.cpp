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
              {"c:\\late\\", {"z.txt"}},
              {"c:\\docs\\sub\\", {"z.txt"}},
              {"c:\\deep\\sub\\", {"xz.txt", "z.txt"}}});
  for (const char* start : {"c:\\", "c:"}) {
    desk.done.clear();
    EXPECT_EQ(desk.Run(std::string("findopen('z.txt',") + start + ")"), 0);
    EXPECT_EQ(desk.done,
              (Texts{"open c:\\z.txt in '0' 1", "open c:\\docs\\z.txt in '0' 1",
                     "open c:\\docs\\sub\\z.txt in '0' 1", "open c:\\deep\\sub\\z.txt in '0' 1"}))
        << "the folder listed behind the hit is not searched";
  }
}

TEST(FileFinder, EachCommandDoesItsThing) {
  ScriptDesk desk;
  Tree(desk, {{"c:\\x\\", {"z.txt"}}});
  EXPECT_EQ(desk.Run("findload('z.txt',c:\\x)\nfindprint('z.txt',c:\\x)\n"
                     "findloadwait('z.txt',c:\\x)\nfindopenwait('z.txt',c:\\x)\n"
                     "findopen('*.txt',c:\\x)\nfindopen('z.txt',c:\\none)\n"
                     "finddelete('Z.txt',c:\\x)"),
            0);
  EXPECT_EQ(desk.done, (Texts{"open c:\\x\\z.txt in '0' 1", "print c:\\x\\z.txt in '0' 1",
                              "wait for \"c:\\x\\z.txt\" 1", "wait for \"c:\\x\\z.txt\" 1"}));
  EXPECT_EQ(desk.files.contents.count("c:\\x\\z.txt"), 0U);
}

TEST(FileFinder, OtherEventsRunBeforeEveryEntry) {
  ScriptDesk desk;
  Tree(desk, {{"c:\\", {"one\\", "two\\", "x.txt"}},
              {"c:\\one\\", {"z.txt"}},
              {"c:\\two\\", {"z.txt", "y.txt"}},
              {"d:\\", {"y.txt"}}});
  int events = 0;
  // A search that starts in there shares the queue of folders.
  const auto timer = desk.loop.NewTimer([&] {
    if (++events == 2) desk.search.FindAndAct("d:\\", "y.txt", FileCode::Open);
  });
  timer->Start(std::chrono::milliseconds(1));
  desk.loop.lateness = [] { return 1; };
  for (int i = 0; i < 2; ++i) {
    desk.loop.Block(1);
    desk.search.FindAndAct("c:\\", "z.txt", FileCode::Open);
  }
  EXPECT_GE(events, 2);
  EXPECT_FALSE(desk.done.empty());
  // The program may end in there.
  desk.done.clear();
  int rounds = 0;
  std::function<void()> round = [&] {
    if (++rounds == 2) desk.loop.Quit();
    desk.loop.Post(round);
  };
  desk.loop.Post(round);
  desk.search.FindAndAct("c:\\", "x.txt", FileCode::Open);
  EXPECT_TRUE(desk.done.empty());
  EXPECT_EQ(rounds, 2) << "neither the folder nor those to come are walked on";
}

}  // namespace
}  // namespace orvanto
