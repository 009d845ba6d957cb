// One of each service that a host provides. The host owns them and outlives the program.
#pragma once

namespace orvanto {

class Clipboard;
class Clock;
class Desktop;
class EventLoop;
class FileDialogs;
class Files;
class Keyboard;
class MessageBoxes;
class Registry;
class Session;
class Shell;
class SocketHost;
class Sound;
class TrayIcon;
namespace forms {
class FormHost;
}

struct Platform {
  EventLoop& loop;
  Clock& clock;
  Registry& registry;
  Files& files;
  Shell& shell;
  Session& session;
  Desktop& desktop;
  Keyboard& keyboard;
  Clipboard& clipboard;
  Sound& sound;
  MessageBoxes& messageBoxes;
  FileDialogs& fileDialogs;
  TrayIcon& trayIcon;
  SocketHost& sockets;
  forms::FormHost& forms;
};

}  // namespace orvanto
