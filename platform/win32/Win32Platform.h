// All services of this host, made and ended in the right order.
#pragma once

#include "platform/Platform.h"
#include "platform/win32/Services.h"
#include "platform/win32/Win32Clipboard.h"
#include "platform/win32/Win32Desktop.h"
#include "platform/win32/Win32Files.h"
#include "platform/win32/Win32FormHost.h"
#include "platform/win32/Win32Keyboard.h"
#include "platform/win32/Win32Loop.h"
#include "platform/win32/Win32Registry.h"
#include "platform/win32/Win32Session.h"
#include "platform/win32/Win32Socket.h"
#include "platform/win32/Win32TrayIcon.h"

namespace orvanto::win32 {

class Win32Platform {
 public:
  Win32Platform();

  Win32Loop loop;
  Win32Clock clock;
  Win32Registry registry;
  Win32Files files;
  Win32FormHost forms{loop};
  Win32Shell shell{loop, forms};
  Win32Session session;
  Win32Desktop desktop;
  Win32Keyboard keyboard;
  Win32Clipboard clipboard;
  Win32Sound sound;
  Win32MessageBoxes messageBoxes{loop, forms};
  Win32FileDialogs fileDialogs{loop, forms};
  Win32TrayIcon trayIcon{loop};
  Win32SocketHost sockets{loop};

  Platform Services();

 private:
  // The shell's extensions want COM on the thread that calls the shell.
  class Com {
   public:
    Com();
    ~Com();
    Com(const Com&) = delete;
    Com& operator=(const Com&) = delete;

   private:
    bool begun_;
  };
  Com com_;
};

}  // namespace orvanto::win32
