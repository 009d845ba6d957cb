// Why an HTTP download has failed, and the box that says so.
#pragma once

#include "platform/MessageBoxes.h"

namespace orvanto {

enum class DownloadTrouble {
  NoResuming,   // the server sends the whole file, or another part of it
  NotFound,     // 404
  CannotWrite,  // the file
  BadAddress,   // of a file to be fetched by FTP through a proxy
  // Today's clients only.
  Refused,   // another status that is no success; with the status line
  NoHeader,  // what has come is no response
  Moved,     // to where nothing can be fetched from; with that address
  InCircles  // one redirection after the other; with the last address
};

struct TroubleBox {
  const char* text;  // a detail may follow
  const char* title;
  BoxIcon icon;
};
const TroubleBox& BoxOf(DownloadTrouble trouble);

}  // namespace orvanto
