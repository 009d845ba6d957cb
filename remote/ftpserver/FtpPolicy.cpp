#include "remote/ftpserver/FtpPolicy.h"

#include <algorithm>

#include "core/ProgramSettings.h"
#include "remote/Access.h"
#include "remote/ftpserver/safe_names.h"

namespace orvanto {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

bool IsRoot(const std::string& folder) { return folder == "/" || folder == "."; }

class DefaultFtpPolicy : public FtpPolicy {
 public:
  explicit DefaultFtpPolicy(const RemoteSettings& remote) : remote_(remote) {}

 protected:
  const RemoteSettings& remote_;
};

// What today's clients expect.
class CompatFtpPolicy : public DefaultFtpPolicy {
 public:
  using DefaultFtpPolicy::DefaultFtpPolicy;

  std::string ListeningPort() const override { return remote_.ftpPort; }

  LineAssembler::Policy LineEnds() const override { return LineAssembler::Policy::Lines; }
  // An interruption comes with telnet's bytes for it before the command.
  std::string_view CommandOf(std::string_view word) const override {
    constexpr unsigned char kFirstOfTelnet = 0xF0;
    while (!word.empty() && static_cast<unsigned char>(word[0]) >= kFirstOfTelnet) {
      word.remove_prefix(1);
    }
    return word;
  }
  std::span<const FtpClient::Command> MoreCommands() const override {
    return FtpClient::TodaysCommands();
  }
  std::string ReplyToUnknown() const override { return "502 Command not implemented."; }

  bool ChangeDirectory(const std::string& folder) const override { return IsRoot(folder); }
  std::string PathOf(const Files& files, const ClientRecord& client,
                     const std::string& name) const override {
    const std::string inRoot(NameInRoot(name));
    return inRoot.empty() || inRoot == "." ? "" : FtpPolicy::PathOf(files, client, inRoot);
  }
  bool ReplacesFiles() const override { return true; }
  int HighestDataPort() const override { return 65535; }
};

// Nobody can do more than he has to, on top of another policy.
template <typename Base>
class StrictFtpPolicy : public Base {
 public:
  using Base::Base;

  std::string Warning() const override { return HasPassword(remote_) ? "" : kNoPassword; }

  bool IsAllowedBeforeLogin(std::string_view command) const override {
    constexpr std::string_view kAllowed[] = {"USER", "PASS", "QUIT", "NOOP", "SYST", "FEAT"};
    return std::find(std::begin(kAllowed), std::end(kAllowed), command) != std::end(kAllowed);
  }
  bool TakesLoginsHereOnly() const override { return !HasPassword(remote_); }
  bool SlowsFailedLogins() const override { return true; }
  std::chrono::milliseconds IdleLimit() const override { return minutes(15); }

  bool ChangeDirectory(const std::string& folder) const override { return IsRoot(folder); }
  std::string PathOf(const Files& files, const ClientRecord& client,
                     const std::string& name) const override {
    const std::string path = Base::PathOf(files, client, name);
    const std::string& folder = client.currentFolder;
    return !path.empty() && StaysInside(files, folder, path.substr(folder.size())) ? path : "";
  }

  int LowestDataPort() const override { return 1024; }
  bool TrustsDataPeer(const ClientRecord& client, const std::string& address) const override {
    return address == client.address;
  }
  std::chrono::milliseconds DataLimit() const override { return seconds(15); }

 private:
  using Base::remote_;
};

template <typename Base>
std::shared_ptr<const FtpPolicy> Make(const RemoteSettings& remote) {
  if (remote.strict) return std::make_shared<StrictFtpPolicy<Base>>(remote);
  return std::make_shared<Base>(remote);
}

}  // namespace

std::shared_ptr<const FtpPolicy> MakeFtpPolicy(const RemoteSettings& remote) {
  return remote.compat ? Make<CompatFtpPolicy>(remote) : Make<DefaultFtpPolicy>(remote);
}

}  // namespace orvanto
