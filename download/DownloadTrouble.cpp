#include "download/DownloadTrouble.h"

#include <cstddef>

#include "core/ProgramTitle.h"

namespace orvanto {
namespace {

// In the order of the troubles.
constexpr TroubleBox kBoxes[] = {
    {"Server did not accept resuming.", "No Resuming Support", BoxIcon::Critical},
    {"The file requested was not found on the server!\r\n\r\nPossible Reasons:\r\n"
     "- File Does Not Exist On Server\r\n- URL Given Was Script And Data Returned Was Invalid\r\n"
     "- URL Entered Was Incorrect\r\n- Server Is Excessively Busy\r\n\r\n"
     "You may reattempt to download.  If its still failure then most likely invalid url.",
     "File Not Found", BoxIcon::None},
    {"The file cannot be written.", kProgramTitle, BoxIcon::Critical},
    {"A proxy takes no user and port of an FTP server.", kProgramTitle, BoxIcon::Critical},
    {"The server does not send the file. It says: ", kProgramTitle, BoxIcon::Critical},
    {"The server's answer is no HTTP response.", kProgramTitle, BoxIcon::Critical},
    {"The file has moved to an address that cannot be fetched from (https is not spoken): ",
     kProgramTitle, BoxIcon::Critical},
    {"The server sends the download from one address to the next, at last to ", kProgramTitle,
     BoxIcon::Critical}};

}  // namespace

const TroubleBox& BoxOf(DownloadTrouble trouble) {
  return kBoxes[static_cast<std::size_t>(trouble)];
}

}  // namespace orvanto
