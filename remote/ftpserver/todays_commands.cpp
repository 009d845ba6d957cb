// The commands of FTP that today's clients need.
#include <algorithm>
#include <string>
#include <string_view>

#include "platform/Files.h"
#include "platform/text/Case.h"
#include "platform/text/WholeNumber.h"
#include "remote/ftpserver/client_control.h"
#include "remote/ftpserver/data_transfers.h"
#include "remote/ftpserver/file_control.h"
#include "remote/ftpserver/safe_names.h"

namespace orvanto {
namespace {

constexpr const char* kOtherProtocol = "522 Network protocol not supported, use (1)";
constexpr const char* kCannotListen = "425 Can't open data connection.";

// The names that a client wants listed: "-la", "/" and "." mean all of them.
std::string PatternOf(std::string_view what) {
  while (what.starts_with('-')) {
    what.remove_prefix(std::min(what.find(' '), what.size()));
    while (what.starts_with(' ')) what.remove_prefix(1);
  }
  const std::string_view name = NameInRoot(what);
  return name.empty() || name == "." ? "*" : std::string(name);
}

}  // namespace

const FtpClient::Command FtpClient::kTodaysCommands[] = {
    {"FEAT", &FtpClient::Feat, nullptr},
    {"OPTS", &FtpClient::Opts, nullptr},
    {"SIZE", &FtpClient::Size, nullptr},
    {"MDTM", &FtpClient::Mdtm, nullptr},
    {"REST", &FtpClient::RestAt, &FtpClient::Always},
    {"LIST", &FtpClient::ListMatching, &FtpClient::Always},
    {"NLST", &FtpClient::Nlst, &FtpClient::Always},
    {"EPRT", &FtpClient::Eprt, &FtpClient::Always},
    {"PASV", &FtpClient::Pasv, &FtpClient::Always},
    {"EPSV", &FtpClient::Epsv, &FtpClient::Always},
    {"ABOR", &FtpClient::Abor, nullptr},
    {"XPWD", &FtpClient::Pwd, nullptr},
    {"XCWD", &FtpClient::Cwd, nullptr},
    {"XCUP", &FtpClient::Cdup, nullptr},
    {"XMKD", &FtpClient::Mkd, nullptr},
    {"XRMD", &FtpClient::Rmd, nullptr},
};

std::span<const FtpClient::Command> FtpClient::TodaysCommands() { return kTodaysCommands; }

void FtpClient::Feat(Argument) {
  Reply(
      "211-Features:\r\n EPRT\r\n EPSV\r\n MDTM\r\n PASV\r\n REST STREAM\r\n SIZE\r\n UTF8\r\n"
      "211 End");
}

void FtpClient::Opts(Argument option) {
  const bool known = EqualIgnoringCase(option, "UTF8") || EqualIgnoringCase(option, "UTF8 ON");
  ReplyWhether(known, "200 Names are in UTF-8.", kSyntaxError);
}

void FtpClient::Size(Argument name) {
  const std::string path = PathOf(name);
  const auto file = IsFile(services_.files, path)
                        ? OpenFile(services_.files, path, Files::Access::Read)
                        : nullptr;
  Reply(file ? "213 " + std::to_string(file->Size()) : "550 " + name + kNoSuchFile);
}

void FtpClient::Mdtm(Argument name) {
  const std::string path = PathOf(name);
  const auto facts = IsFile(services_.files, path) ? services_.files.Look(path) : std::nullopt;
  Reply(facts ? "213 " + UtcText(facts->changed) : "550 " + name + kNoSuchFile);
}

void FtpClient::RestAt(Argument offset) {
  record_.restartAt = WholeNumber<decltype(record_.restartAt)>(offset).value_or(0);
  record_.restartAt > 0 ? Reply("350 Restarting at " + offset) : Rest(offset);
}

void FtpClient::ListMatching(Argument what) {
  Reply("150 Opening ASCII mode data connection for /bin/ls.");
  transfer_->SendListing({false, PatternOf(what)});
}

void FtpClient::Nlst(Argument what) {
  Reply("150 Opening ASCII mode data connection for file list.");
  transfer_->SendListing({true, PatternOf(what)});
}

// "|1|10.1.2.3|20000|", with any character in place of the lines.
void FtpClient::Eprt(Argument where) {
  const std::size_t protocol = 1;
  const std::size_t address = where.find(where[0], protocol) + 1;
  const std::size_t port = where.find(where[0], address) + 1;
  if (address == 0 || port == 0 || !where.ends_with(where[0]) || port == where.size()) {
    return Reply(kSyntaxError);
  }
  const auto number = WholeNumber<int>(where.substr(port, where.size() - port - 1));
  if (!number) return Reply(kSyntaxError);
  if (where.substr(protocol, address - 1 - protocol) != "1") return Reply(kOtherProtocol);
  SetDataPort(where.substr(address, port - 1 - address), *number);
}

std::uint16_t FtpClient::ListenForData() {
  return transfer_->ListenOn(commandSock_->BoundAddress());
}

void FtpClient::Pasv(Argument) {
  if (record_.onlyEpsv) return Reply(kSyntaxError);
  const std::uint16_t port = ListenForData();
  if (port == 0) return Reply(kCannotListen);
  std::string address = commandSock_->BoundAddress();
  std::replace(address.begin(), address.end(), '.', ',');
  Reply("227 Entering Passive Mode (" + address + "," + std::to_string(port / 256) + "," +
        std::to_string(port % 256) + ").");
}

void FtpClient::Epsv(Argument protocol) {
  record_.onlyEpsv |= EqualIgnoringCase(protocol, "ALL");
  if (EqualIgnoringCase(protocol, "ALL")) return Reply("200 EPSV ALL command successful.");
  if (!protocol.empty() && protocol != "1") return Reply(kOtherProtocol);
  const std::uint16_t port = ListenForData();
  if (port == 0) return Reply(kCannotListen);
  Reply("229 Entering Extended Passive Mode (|||" + std::to_string(port) + "|)");
}

void FtpClient::Abor(Argument) {
  transfer_->Abort();
  Reply("226 ABOR command successful.");
}

}  // namespace orvanto
