#include "remote/TelnetPolicy.h"

namespace orvanto {

TelnetPolicy TelnetPolicyFor(const RemoteSettings& remote) {
  TelnetPolicy policy;
  if (remote.compat) {
    policy.lines = LineAssembler::Policy::Edited;
    policy.offersCharacterMode = true;
    policy.keepsLine = false;
  }
  if (remote.strict) {
    policy.chatLetsIn = false;
    policy.afterWrongPassword = std::chrono::seconds(2);
    policy.longestSilence = std::chrono::minutes(15);
    policy.needsPassword = true;
  }
  return policy;
}

}  // namespace orvanto
