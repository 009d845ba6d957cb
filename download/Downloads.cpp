#include "download/Downloads.h"

#include "core/Convert.h"
#include "core/ProgramSettings.h"
#include "core/ProgramTitle.h"

namespace orvanto {

Downloads::Downloads(forms::FormHost& host, const Services& services)
    : options_(services.registry),
      header(host),
      options(host, options_, services.messageBoxes),
      ftpOptions(host, options_, services.messageBoxes),
      proxy(host, options_, services.messageBoxes),
      save(host, services.files),
      window(host, {services, options_, header.Log()}, state_),
      services_(services),
      next_(services.loop.NewDeferred([this] { BeginNext(); })) {
  WireMenu();
  window.onDownload = [this](const DownloadRequest& request) {
    BeginDownload(request.url, request.replace);
  };
  window.onEnded = [this](const DownloadEnd& end) {
    ended.Raise(end);
    next_->Post();
  };
}

void Downloads::WireMenu() {
  window.mnuOptions.onClick = [this] { options.Open(); };
  window.mnuFtpOptions.onClick = [this] { ftpOptions.Open(); };
  window.mnuProxy.onClick = [this] { proxy.Open(); };
  window.mnuHeader.onClick = [this] { header.Open(); };
  window.mnuSave.onClick = [this] {
    save.onPicked = [this, from = state_.LocalPath](const std::optional<std::string>& path) {
      if (path) SaveAs(from, *path);
    };
    save.Open(state_.LocalPath);
  };
}

void Downloads::SaveAs(const std::string& from, const std::string& path) {
  if (services_.files.Exists(path) &&
      services_.messageBoxes.Show("This file exists already. Replace it?\r\n" + path, kProgramTitle,
                                  Buttons::NoUnlessYes, BoxIcon::Question) != Answer::Yes) {
    return;
  }
  const std::string trouble = services_.files.Copy(from, path);
  if (trouble.empty()) return;
  services_.messageBoxes.Show("The file could not be saved:\r\n" + trouble, kProgramTitle,
                              Buttons::Ok, BoxIcon::Critical);
}

void Downloads::BeginDownload(const std::string& url, bool replace) {
  waiting_.push_back({std::string(TrimBlanks(url)), replace});
  next_->Post();
}

void Downloads::BeginNext() {
  if (waiting_.empty() || window.Running()) return;
  const DownloadRequest request = std::move(waiting_.front());
  waiting_.pop_front();
  window.Begin(request, services_.remoteSettings.compat ? compatPolicy_ : policy_);
}

void Downloads::Unload() {
  waiting_.clear();
  ForEachDialog([](forms::Form& form) { form.Unload(); });
  window.Unload();
}

void Downloads::ForEachDialog(const std::function<void(forms::Form& form)>& each) {
  for (forms::Form* form :
       std::initializer_list<forms::Form*>{&header, &options, &ftpOptions, &proxy, &save}) {
    each(*form);
  }
}

}  // namespace orvanto
