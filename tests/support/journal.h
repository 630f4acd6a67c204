// Records the calls that the program makes of a virtual machine, in order and across all interfaces, and runs a test's
// actions before or after them.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// Recorded operations, in order.
using Entries = std::vector<std::string>;
Entries operator+(Entries entries, const Entries& more);

class Journal {
 public:
  // A test's action around an operation. It may change the machine, as another program would, or throw the error that
  // the operation shall fail with. It receives the object of the operation: for a file, its path.
  using Action = std::function<void(const std::string& object)>;

  // Runs `action` just before, or just after, the `occurrence`-th operation `name`, counted from 1 since the journal
  // was created. If a `before` action throws, the operation is not performed.
  void before(const std::string& name, Action action, int occurrence = 1);
  void after(const std::string& name, Action action, int occurrence = 1);
  // Runs `action` before every such operation.
  void beforeEach(const std::string& name, Action action) { beforeEach_[name] = std::move(action); }

  // Records an operation as "name object", or as "name" if `object` is empty, and performs it.
  template <class Work>
  auto perform(const std::string& name, const std::string& object, Work work) {
    const int occurrence = begin(name, object);
    if constexpr (std::is_void_v<decltype(work())>) {
      work();
      run(after_, name, occurrence, object);
    } else {
      auto result = work();
      run(after_, name, occurrence, object);
      return result;
    }
  }

  // The operations so far.
  const Entries& entries() const { return entries_; }
  // How often the operation `name` was requested.
  int count(const std::string& name) const;
  // Forgets the entries but not the counts.
  void clear() { entries_.clear(); }

 private:
  using Actions = std::map<std::pair<std::string, int>, Action>;

  int begin(const std::string& name, const std::string& object);
  static void run(Actions& actions, const std::string& name, int occurrence, const std::string& object);

  Entries entries_;
  std::map<std::string, int> counts_;
  Actions before_;
  Actions after_;
  std::map<std::string, Action> beforeEach_;
};
