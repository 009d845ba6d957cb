// Any bytes as a key sequence: either an error, or events in which everything held is released.
#include <cstdint>
#include <cstdlib>
#include <map>

#include "platform/text/Error.h"
#include "script/KeySequence.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvanto;
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::vector<KeyEvent> events;
  try {
    events = ParseKeySequence(text);
  } catch (const Error& error) {
    if (error.Number() != kIllegalCall) std::abort();
    return 0;
  }
  std::map<Key, int> held;
  for (const KeyEvent& event : events) {
    switch (event.action) {
      case KeyEvent::Action::Hold:
        if (++held[event.key] != 1) std::abort();
        break;
      case KeyEvent::Action::Release:
        if (--held[event.key] != 0) std::abort();
        break;
      case KeyEvent::Action::Press:
        if (event.count == 0 || event.count > kMostRepeats) std::abort();
        break;
    }
  }
  for (const auto& [key, count] : held) {
    if (count != 0) std::abort();
  }
  return 0;
}
