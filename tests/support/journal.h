// What a virtual machine was asked to do, in order, across all of its interfaces; and what shall happen when it is.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// Operations, in their order.
using Entries = std::vector<std::string>;
Entries operator+(Entries entries, const Entries& more);

class Journal {
 public:
  // What happens around an operation: it may change the machine, as another program would, or throw what the
  // operation is to fail with. It is told what the operation is about: for a file its path.
  using Action = std::function<void(const std::string& object)>;

  // Performs `action` right before, or right after, the operation `name` is carried out for the `occurrence`-th
  // time, counted from 1 since this journal began. What `before` throws keeps the operation from being carried out.
  void before(const std::string& name, Action action, int occurrence = 1);
  void after(const std::string& name, Action action, int occurrence = 1);
  // The same each time.
  void beforeEach(const std::string& name, Action action) { beforeEach_[name] = std::move(action); }

  // Notes an operation as "name object", or as the name alone where there is no object, and carries it out.
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
  // How often one of them was asked for.
  int count(const std::string& name) const;
  // Forgets the entries, but not how often anything happened.
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
