// TCP sockets on Winsock, driven by the messages of the loop's window.
#pragma once

#include <winsock2.h>  // before windows.h

#include "platform/net/BufferedSocket.h"
#include "platform/net/ConnectionRequests.h"
#include "platform/win32/Handle.h"
#include "platform/win32/Win32Loop.h"

namespace orvanto::win32 {

inline void CloseSocketHandle(HANDLE handle) { closesocket(reinterpret_cast<SOCKET>(handle)); }
using SocketHandle = Handle<HANDLE, CloseSocketHandle, -1>;

class Win32SocketHost : public SocketHost {
 public:
  // Throws std::system_error when there is no Winsock.
  explicit Win32SocketHost(Win32Loop& loop);
  ~Win32SocketHost() override;
  Win32SocketHost(const Win32SocketHost&) = delete;
  Win32SocketHost& operator=(const Win32SocketHost&) = delete;

  std::unique_ptr<TcpSocket> NewSocket(Use use) override;

 private:
  Win32Loop& loop_;
  SharedArrivals arrivals_;
  ConnectionRequests<SocketHandle> requests_;
};

}  // namespace orvanto::win32
