#include "companion/standard_input.h"

#include <array>
#include <cstddef>
#include <iostream>
#include <string>
#include <utility>

#include "platform/error.h"

Bytes standardInput(std::size_t most) {
  std::string content;
  std::array<char, 65536> part{};
  while (std::cin) {
    std::cin.read(part.data(), part.size());
    content.append(part.data(), static_cast<std::size_t>(std::cin.gcount()));
    if (content.size() > most) throw Error("Companion", 1, "Standard input is larger than any bookmark file.");
  }
  if (std::cin.bad()) throw Error("Companion", 2, "Standard input couldn’t be read.");
  return Bytes(std::move(content));
}
