#include "script/FileFinder.h"

#include <gtest/gtest.h>

#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

using Texts = std::vector<std::string>;

Texts Opened(const ScriptDesk& desk) {
  Texts opened;
  for (const ShellRequest& request : desk.shell.requests) opened.push_back(request.file);
  return opened;
}

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
              {"c:\\deep\\", {"sub\\"}},
              {"c:\\late\\", {"z.txt"}},
              {"c:\\docs\\sub\\", {"z.txt"}},
              {"c:\\deep\\sub\\", {"xz.txt", "z.txt"}}});
  for (const char* start : {"c:\\", "c:"}) {
    desk.shell.requests.clear();
    EXPECT_EQ(desk.Run(std::string("findopen('z.txt',") + start + ")"), 0);
    EXPECT_EQ(Opened(desk), (Texts{"c:\\z.txt", "c:\\docs\\z.txt", "c:\\docs\\sub\\z.txt",
                                   "c:\\deep\\sub\\z.txt"}))
        << "the folder listed behind the hit is not searched";
    EXPECT_EQ(desk.shell.requests[0].show, ShowCommand::Normal);
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
  ASSERT_EQ(desk.shell.requests.size(), 2U);
  EXPECT_EQ(desk.shell.requests[0].operation, "open");
  EXPECT_EQ(desk.shell.requests[1].operation, "print");
  EXPECT_EQ(desk.shell.waitedFor, (Texts{"c:\\x\\z.txt 1", "c:\\x\\z.txt 1"}));
  EXPECT_EQ(desk.files.contents.count("c:\\x\\z.txt"), 0U);
}

TEST(FileFinder, OtherEventsRunBeforeEveryEntryAndASearchAmongThemSharesTheQueue) {
  ScriptDesk desk;
  Tree(desk, {{"c:\\", {"one\\", "two\\", "x.txt"}},
              {"c:\\one\\", {"z.txt"}},
              {"c:\\two\\", {"z.txt", "y.txt"}},
              {"d:\\", {"y.txt"}}});
  int events = 0;
  const auto timer = desk.loop.NewTimer([&] {
    if (++events == 2) desk.search.FindAndAct("d:\\", "y.txt", FileCode::Open);
  });
  timer->Start(std::chrono::milliseconds(1));
  desk.loop.lateness = [] { return 1; };
  desk.loop.Block(1);
  desk.search.FindAndAct("c:\\", "z.txt", FileCode::Open);
  desk.loop.Block(1);
  desk.search.FindAndAct("c:\\", "z.txt", FileCode::Open);
  EXPECT_GE(events, 2);
  EXPECT_FALSE(Opened(desk).empty());
}

TEST(FileFinder, EndsWithTheProgram) {
  ScriptDesk desk;
  Tree(desk, {{"c:\\", {"one\\", "z.txt"}}, {"c:\\one\\", {"z.txt"}}});
  desk.loop.Post([&] { desk.loop.Quit(); });
  desk.search.FindAndAct("c:\\", "z.txt", FileCode::Open);
  EXPECT_TRUE(Opened(desk).empty());
}

TEST(FileFinder, AnswersTheFileCheckOfTasks) {
  ScriptDesk desk;
  desk.files.contents["C:\\Orvanto\\scripts\\Night.txt"] = "";
  desk.store.CheckTaskFile(kRunScript, "night.TXT");
  EXPECT_EQ(desk.store.TaskValidationMessage, "");
  desk.store.CheckTaskFile(kRunScript, "day.txt");
  EXPECT_EQ(desk.store.TaskValidationMessage, "File does not exist");
}

}  // namespace
}  // namespace orvanto
