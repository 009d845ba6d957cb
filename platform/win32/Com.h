// COM on the calling thread, which the shell's extensions want.
#pragma once

namespace orvanto::win32 {

// From Begin until the end of its life. For a member of what calls the shell: much that a call has
// begun goes on after it.
class Com {
 public:
  Com() = default;
  ~Com();
  Com(const Com&) = delete;
  Com& operator=(const Com&) = delete;

  void Begin();  // does nothing when it has begun

 private:
  bool begun_ = false;
};

}  // namespace orvanto::win32
