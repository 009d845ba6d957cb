// The downloads of the program: their window, its dialogs, and who waits for the window.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "download/CompatDownloadPolicy.h"
#include "download/frmDownload.h"
#include "download/frmFetchwellOptions.h"
#include "download/frmFtpOptions.h"
#include "download/frmHeader.h"
#include "download/frmProxy.h"
#include "download/frmSave.h"
#include "platform/Event.h"

namespace orvanto {

class Downloads {
 public:
  using Services = DownloadServices;
  Downloads(forms::FormHost& host, const Services& services);

  // Fetches the file into the program's folder as soon as those before it have ended, by the policy
  // that the settings ask for then; see DownloadRequest. Begins from the loop.
  void BeginDownload(const std::string& url, bool replace = false);
  // Whether one runs or waits.
  bool Busy() const { return !waiting_.empty() || window.Running(); }
  // Of the windows beside the download's own.
  void ForEachDialog(const std::function<void(forms::Form& form)>& each);
  // Closes all windows, and ends with them what runs and what waits.
  void Unload();

  // An update check, or a script, has asked for one; nobody reads it.
  bool updateCheckRequested = false;

  // After it the next one begins.
  Event<const DownloadEnd&> ended;

 private:
  DownloadOptions options_;
  const DownloadPolicy policy_;
  const CompatDownloadPolicy compatPolicy_;
  DownloadState state_;

 public:
  frmHeader header;
  frmFetchwellOptions options;
  frmFtpOptions ftpOptions;
  frmProxy proxy;
  frmSave save;
  frmDownload window;

 private:
  void WireMenu();
  void SaveAs(const std::string& from, const std::string& path);
  void BeginNext();

  const Services services_;
  std::deque<DownloadRequest> waiting_;
  const std::unique_ptr<Deferred> next_;
};

}  // namespace orvanto
