#include "tests/companion/companion_machine.h"

#include <iostream>
#include <sstream>

#include "companion/companion.h"

Ending CompanionMachine::run(const std::vector<std::string>& arguments) {
  const std::size_t printedBefore = machine_.output.text().size();
  std::ostringstream errors;
  std::streambuf* const previous = std::cerr.rdbuf(errors.rdbuf());
  const int status = runCompanion(Arguments(arguments.begin(), arguments.end()), machine_.loop.now());
  std::cerr.rdbuf(previous);
  EXPECT_TRUE(std::cout.good());
  return {status, machine_.output.text().substr(printedBefore), errors.str()};
}

Ending CompanionMachine::runWithInput(const std::string& input, const std::vector<std::string>& arguments) {
  std::istringstream text(input);
  std::streambuf* const previous = std::cin.rdbuf(text.rdbuf());
  std::cin.clear();
  Ending ending = run(arguments);
  std::cin.rdbuf(previous);
  return ending;
}
