// A host without windows.
#pragma once

#include <memory>
#include <string>

#include "platform/forms/Form.h"

namespace orvanto::forms {

// Keeps forms in memory only: the console host's and the tests'.
class HeadlessFormHost : public FormHost {
 public:
  std::unique_ptr<FormPeer> Attach(Form&) override { return nullptr; }
  void Detach(std::unique_ptr<FormPeer>) override {}
  Size ScreenSize() const override { return {1280 * 15, 800 * 15}; }
  Size FrameSize(const Form&) const override { return {0, 0}; }
  Size TextSize(const std::string& text, int width) const override;  // an estimate
};

}  // namespace orvanto::forms
