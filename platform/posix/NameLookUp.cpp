#include "platform/posix/NameLookUp.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/posix/Descriptor.h"

namespace orvanto::posix {

std::vector<Ipv4> SystemAddressesOf(const std::string& name) {
  std::vector<Ipv4> addresses;
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* all = nullptr;
  if (::getaddrinfo(name.c_str(), nullptr, &hints, &all) != 0) return addresses;
  for (const addrinfo* one = all; one != nullptr; one = one->ai_next) {
    sockaddr_in address{};
    std::memcpy(&address, one->ai_addr, sizeof address);
    addresses.push_back(ntohl(address.sin_addr.s_addr));
  }
  ::freeaddrinfo(all);
  return addresses;
}

// Both threads hold it; the one that ends last drops it.
struct NameLookUp::Question {
  Question() : answered(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!answered) throw std::system_error(errno, std::generic_category(), "eventfd");
  }

  const Descriptor answered;
  std::mutex mutex;
  std::vector<Ipv4> addresses;
};

NameLookUp::NameLookUp(PosixLoop& loop, const AddressesOf& ask, const std::string& name,
                       std::function<void(const std::vector<Ipv4>&)> answer)
    : question_(std::make_shared<Question>()) {
  std::thread([ask, name, question = question_] {
    std::vector<Ipv4> found = ask(name);
    const std::lock_guard lock(question->mutex);
    question->addresses = std::move(found);
    ::eventfd_write(question->answered.Get(), 1);
  }).detach();
  watch_ =
      loop.WatchFd(question_->answered.Get(), POLLIN, [this, answer = std::move(answer)](short) {
        watch_->SetEvents(0);
        std::unique_lock lock(question_->mutex);
        const std::vector<Ipv4> addresses = std::move(question_->addresses);
        lock.unlock();
        answer(addresses);  // this may be destroyed in it
      });
}

}  // namespace orvanto::posix
