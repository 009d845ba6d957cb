// What every event loop keeps to. A test program links event_loop_contract.cpp and instantiates
// EventLoopContract with its loop; RealLoopContract too when the loop waits for real time.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>

#include "platform/EventLoop.h"

namespace orvanto {

struct LoopUnderTest {
  // Keeps the thread busy: time passes and nothing is delivered.
  std::function<void(std::chrono::milliseconds)> busy;
  std::unique_ptr<EventLoop> loop;
};
using MakeLoop = std::function<LoopUnderTest()>;

class EventLoopContract : public testing::TestWithParam<MakeLoop> {
 protected:
  EventLoopContract() : made_(GetParam()()), loop_(*made_.loop) {}

  LoopUnderTest made_;
  EventLoop& loop_;
};

class RealLoopContract : public EventLoopContract {};

}  // namespace orvanto
