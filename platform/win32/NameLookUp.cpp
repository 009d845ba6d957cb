#include "platform/win32/NameLookUp.h"

#include <ws2tcpip.h>

#include <utility>

#include "platform/win32/Text.h"

namespace orvanto::win32 {

// Both sides hold it; the one that ends last drops it.
class NameLookUp::Question {
 public:
  void Answer(std::vector<Ipv4> addresses) {
    AcquireSRWLockExclusive(&lock_);
    addresses_ = std::move(addresses);
    ReleaseSRWLockExclusive(&lock_);
  }
  std::vector<Ipv4> Addresses() {
    AcquireSRWLockShared(&lock_);
    std::vector<Ipv4> addresses = addresses_;
    ReleaseSRWLockShared(&lock_);
    return addresses;
  }

 private:
  SRWLOCK lock_ = SRWLOCK_INIT;
  std::vector<Ipv4> addresses_;
};

// What the system works on.
struct NameLookUp::Call {
  OVERLAPPED overlapped{};
  ADDRINFOEXW* found = nullptr;
  std::shared_ptr<Question> question;
  HWND window;
  UINT message;
};

NameLookUp::NameLookUp(Win32Loop& loop, const std::string& name,
                       std::function<void(const std::vector<Ipv4>&)> answer)
    : loop_(loop),
      question_(std::make_shared<Question>()),
      message_(loop.BeginSocketMessages([question = question_, answer = std::move(answer)](
                                            WPARAM, LPARAM) { answer(question->Addresses()); })) {
  auto call = std::make_unique<Call>();
  call->question = question_;
  call->window = loop.Window();
  call->message = message_;
  const int result =
      GetAddrInfoExW(ToWide(name).c_str(), nullptr, NS_DNS, nullptr, nullptr, &call->found, nullptr,
                     &call->overlapped, reinterpret_cast<void*>(&OnAnswer), nullptr);
  Call* const handedOver = call.release();
  if (result != WSA_IO_PENDING) OnAnswer(static_cast<DWORD>(result), 0, &handedOver->overlapped);
}

// On a thread of the system's, or before the question has been taken.
void CALLBACK NameLookUp::OnAnswer(DWORD error, DWORD, OVERLAPPED* overlapped) {
  const std::unique_ptr<Call> call(CONTAINING_RECORD(overlapped, Call, overlapped));
  if (error == NO_ERROR) {
    std::vector<Ipv4> addresses;
    const ADDRINFOEXW* one = call->found;
    for (; one != nullptr; one = reinterpret_cast<const ADDRINFOEXW*>(one->ai_next)) {
      if (one->ai_family != AF_INET) continue;
      const auto* address = reinterpret_cast<const sockaddr_in*>(one->ai_addr);
      addresses.push_back(ntohl(address->sin_addr.s_addr));
    }
    FreeAddrInfoExW(call->found);
    call->question->Answer(std::move(addresses));
  }
  PostMessageW(call->window, call->message, 0, 0);
}

}  // namespace orvanto::win32
