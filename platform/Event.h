// What a service tells whoever listens, any number of them.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvanto {

// Listens as long as it lives. Keep it as the last member of the listener, so that nothing comes
// any more when the rest of it goes. It may outlive the event.
using Subscription = std::shared_ptr<void>;

// Raise calls the listeners in the order of their subscription. A listener may subscribe others
// (who hear of the next raising), end any subscription, its own too (it hears of nothing from then
// on), and raise the event again; it may not destroy it. An exception of a listener ends the
// raising and reaches the caller.
template <typename... Arguments>
class Event {
 public:
  using Listener = std::function<void(Arguments...)>;

  [[nodiscard]] Subscription Subscribe(Listener listener) {
    Subscription subscription = std::make_shared<char>();
    entries_.push_back({subscription, std::move(listener)});
    return subscription;
  }

  void Raise(Arguments... arguments) {
    std::erase_if(entries_, [](const Entry& each) { return each.subscription.expired(); });
    // A copy, because listeners come and go meanwhile.
    for (const Entry& each : std::vector(entries_)) {
      if (!each.subscription.expired()) each.listener(arguments...);
    }
  }

 private:
  struct Entry {
    std::weak_ptr<void> subscription;
    Listener listener;
  };
  std::vector<Entry> entries_;
};

}  // namespace orvanto
