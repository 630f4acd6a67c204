// Flags that must not outlive what they stand for.
#pragma once

// Holds a flag true for as long as it lives, whichever way the scope ends.
class FlagScope {
 public:
  explicit FlagScope(bool& flag) : flag_(&flag) { flag = true; }
  ~FlagScope() {
    if (flag_ != nullptr) *flag_ = false;
  }
  FlagScope(const FlagScope&) = delete;
  FlagScope& operator=(const FlagScope&) = delete;

  // Leaves the flag true beyond this scope: another scope will clear it.
  void release() { flag_ = nullptr; }

 private:
  bool* flag_;
};
