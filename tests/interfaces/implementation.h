// An implementation of an interface, as a parameter of tests.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

template <class Subject>
struct Implementation {
  std::string name;
  std::function<std::unique_ptr<Subject>()> make;

  friend std::ostream& operator<<(std::ostream& stream, const Implementation& implementation) {
    return stream << implementation.name;
  }
};

// Returns the name of the parameter of a test: that of the implementation.
inline constexpr auto implementationName = [](const auto& information) { return information.param.name; };
