#include "platform/Event.h"

#include <gtest/gtest.h>

#include <string>

namespace orvanto {
namespace {

TEST(Event, TellsWhoListensInOrderAsLongAsTheyDo) {
  Event<std::string> event;
  std::string heard;
  const auto listener = [&](const char* name) {
    return event.Subscribe([&heard, name](const std::string& what) { heard += name + what; });
  };
  Subscription one = listener("1");
  Subscription late;
  // Ends the next, and itself while it is being called, and subscribes another.
  Subscription two;
  Subscription three;
  two = event.Subscribe([&](const std::string& what) {
    heard += "2" + what;
    three.reset();
    if (!late) late = listener("L");
    two.reset();
    if (what == "a") event.Raise("x");
  });
  three = listener("3");
  event.Raise("a");
  EXPECT_EQ(heard, "1a2a1xLx");
  one.reset();
  event.Raise("b");
  EXPECT_EQ(heard, "1a2a1xLxLb");
  Subscription outlives;
  {
    Event<> brief;
    outlives = brief.Subscribe([] {});
  }
}

}  // namespace
}  // namespace orvanto
