// The addresses of names, by the system's asynchronous look-up.
#pragma once

#include <winsock2.h>  // before windows.h

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/net/BufferedSocket.h"
#include "platform/win32/Win32Loop.h"

namespace orvanto::win32 {

// One question. Destroying it takes it back: what the system still answers is dropped.
class NameLookUp {
 public:
  // Calls `answer` once, from the loop; this may be destroyed in it. No address: not known.
  NameLookUp(Win32Loop& loop, const std::string& name,
             std::function<void(const std::vector<Ipv4>&)> answer);
  ~NameLookUp() { loop_.EndSocketMessages(message_); }
  NameLookUp(const NameLookUp&) = delete;
  NameLookUp& operator=(const NameLookUp&) = delete;

 private:
  class Question;
  struct Call;
  static void CALLBACK OnAnswer(DWORD error, DWORD bytes, OVERLAPPED* overlapped);

  Win32Loop& loop_;
  const std::shared_ptr<Question> question_;
  const UINT message_;
};

}  // namespace orvanto::win32
