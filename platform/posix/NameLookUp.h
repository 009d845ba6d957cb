// The addresses of names, asked for away from the loop's thread, because the system's answer may
// take half a minute.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/net/BufferedSocket.h"
#include "platform/posix/PosixLoop.h"

namespace orvanto::posix {

// Called on a thread of its own. No address: the name is not known.
using AddressesOf = std::function<std::vector<Ipv4>(const std::string& name)>;
std::vector<Ipv4> SystemAddressesOf(const std::string& name);

// One question. Destroying it takes it back: nobody waits for the thread, which ends when it can.
class NameLookUp {
 public:
  // Calls `answer` once, from the loop; this may be destroyed in it. Throws std::system_error where
  // there is no thread or descriptor left.
  NameLookUp(PosixLoop& loop, const AddressesOf& ask, const std::string& name,
             std::function<void(const std::vector<Ipv4>&)> answer);

 private:
  struct Question;
  const std::shared_ptr<Question> question_;
  std::unique_ptr<PosixLoop::Watch> watch_;
};

}  // namespace orvanto::posix
