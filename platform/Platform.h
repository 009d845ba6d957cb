// One of each service that a host provides. The host owns them and outlives the program.
#pragma once

namespace orvanto {

class Clock;
class EventLoop;
class FileDialogs;
class Files;
class MessageBoxes;
class Registry;
class Session;
class Shell;
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
  Sound& sound;
  MessageBoxes& messageBoxes;
  FileDialogs& fileDialogs;
  TrayIcon& trayIcon;
  forms::FormHost& forms;
};

}  // namespace orvanto
