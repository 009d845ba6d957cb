// The posted work of a loop, in its order.
#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <utility>

#include "platform/EventLoop.h"

namespace orvanto {

class WorkQueue {
 public:
  // `wake` is called after each post.
  explicit WorkQueue(std::function<void()> wake = nullptr) : wake_(std::move(wake)) {}
  // Work that was never run may own timers and sockets, and what it owns may post.
  ~WorkQueue() { Clear(); }
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;

  bool Empty() const { return works_.empty(); }
  std::size_t Size() const { return works_.size(); }

  void Post(std::function<void()> work) {
    works_.push_back({std::move(work), nullptr});
    if (wake_) wake_();
  }

  // The queue must outlive what it returns.
  std::unique_ptr<Deferred> NewDeferred(std::function<void()> handler) {
    return std::make_unique<Item>(*this, std::move(handler));
  }

  // Takes the first work out and calls run(it). There must be one.
  template <typename Run>
  void RunFirst(const Run& run) {
    if (Item* const item = works_.front().item; item != nullptr) {
      item->Cancel();  // so that it may be posted anew
      return run(item->Handler());
    }
    const std::function<void()> work = std::move(works_.front().handler);
    works_.pop_front();
    run(work);
  }

  void Clear() {
    while (!Empty()) RunFirst([](const auto&) {});
  }

 private:
  class Item;
  struct Work {
    std::function<void()> handler;
    Item* item;  // none: it runs once
  };

  // Its work is one node, which is either here or in the queue.
  class Item : public Deferred {
   public:
    Item(WorkQueue& queue, std::function<void()> handler)
        : queue_(queue), own_{Work{std::move(handler), this}} {}
    ~Item() override { Cancel(); }

    void Post() override {
      if (own_.empty()) return;
      queue_.works_.splice(queue_.works_.end(), own_);
      if (queue_.wake_) queue_.wake_();
    }
    void Cancel() override {
      if (own_.empty()) own_.splice(own_.end(), queue_.works_, place_);
    }
    const std::function<void()>& Handler() const { return place_->handler; }

   private:
    WorkQueue& queue_;
    std::list<Work> own_;
    const std::list<Work>::iterator place_ = own_.begin();
  };

  const std::function<void()> wake_;
  std::list<Work> works_;
};

}  // namespace orvanto
