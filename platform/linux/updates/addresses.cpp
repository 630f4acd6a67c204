#include "platform/linux/updates/addresses.h"

#include <algorithm>

namespace {

constexpr std::string_view scheme = "https://";

char lowerCase(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
}

bool isPrintable(char character) { return character > ' ' && character < '\x7F'; }

}  // namespace

bool isSecureAddress(std::string_view address) {
  const bool hasScheme =
      address.size() > scheme.size() && std::ranges::equal(address.substr(0, scheme.size()), scheme, {}, lowerCase);
  if (!hasScheme || !std::ranges::all_of(address, isPrintable)) return false;
  const std::string_view rest = address.substr(scheme.size());
  const std::string_view host = rest.substr(0, rest.find_first_of("/?#\\"));
  return !host.empty() && host.front() != ':' && host.find('@') == std::string_view::npos;
}
