#include "app/console/ConsoleDownloads.h"

#include <algorithm>

#include "download/Downloads.h"
#include "platform/net/SocketError.h"
#include "platform/text/PrintableLine.h"

namespace orvanto {
namespace {

constexpr std::int64_t kBetweenLines = 10'000;  // milliseconds, where lines stay

}  // namespace

ConsoleDownloads::ConsoleDownloads(Downloads& downloads, const Clock& clock, std::ostream& out,
                                   std::ostream& err, bool terminal)
    : downloads_(downloads),
      clock_(clock),
      out_(out),
      err_(err),
      terminal_(terminal),
      shown_(clock.UnixMilliseconds()) {
  downloads.window.onProgress = [this] { ShowProgress(); };
  downloads.window.onStalled = [this](int error) {
    stall_ = NumberedErrorText(error);
    downloads_.window.cmdStop.Press();
  };
  ended_ = downloads.ended.Subscribe([this](const DownloadEnd& end) {
    EndLine();
    const std::string trouble = std::exchange(stall_, {});
    if (end.whole) {
      const std::string name = end.path.substr(end.path.rfind('\\') + 1);
      out_ << PrintableLine("Downloaded " + name) << std::endl;
    } else {
      allWell_ = false;
      err_ << PrintableLine("Not downloaded: " + WithoutLogin(end.url) + ": " +
                            (trouble.empty() ? end.trouble : trouble))
           << std::endl;
    }
  });
}

ConsoleDownloads::~ConsoleDownloads() {
  downloads_.window.onProgress = nullptr;
  downloads_.window.onStalled = nullptr;
}

void ConsoleDownloads::ShowProgress() {
  const std::int64_t now = clock_.UnixMilliseconds();
  if (!terminal_ && now - shown_ < kBetweenLines && now >= shown_) return;
  shown_ = now;
  const frmDownload& window = downloads_.window;
  std::string line = window.lblRecieve.Text() + " of " + window.lblSize.Text();
  for (const forms::Label* label : {&window.lblSpeed, &window.lblRemaining}) {
    if (!label->Text().empty()) line += ", " + label->Text();
  }
  if (!terminal_) {
    out_ << line << std::endl;
    return;
  }
  const std::size_t length = line.size();
  line.resize(std::max(lineLength_, length), ' ');
  lineLength_ = length;
  out_ << '\r' << line << std::flush;
}

void ConsoleDownloads::EndLine() {
  if (std::exchange(lineLength_, 0) > 0) out_ << '\n';
}

}  // namespace orvanto
