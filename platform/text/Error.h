// A failure that is passed to the caller, with the classic error numbers.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace orvanto {

enum ErrorNumber : int {
  kNoError = 0,
  kIllegalCall = 5,
  kOverflow = 6,
  kSubscriptOutOfRange = 9,
  kTypeMismatch = 13,
  kInternalError = 51,
  kFileNotFoundError = 53,
  kFileAlreadyOpen = 55,
  kDeviceError = 57,
  kDiskFullError = 61,
  kTooManyFilesError = 67,
  kPermissionError = 70,
  kPathAccessError = 75,
  kPathNotFoundError = 76,
};

// Where a number reaches a log or a remote text, it is this.
class Error : public std::runtime_error {
 public:
  Error(int number, const std::string& text, std::string source = {})
      : std::runtime_error(text), number_(number), source_(std::move(source)) {}
  int Number() const { return number_; }
  const std::string& Source() const { return source_; }

 private:
  int number_;
  std::string source_;
};

}  // namespace orvanto
