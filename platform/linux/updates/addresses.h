// The addresses that the updater reads.
#pragma once

#include <string_view>

// Returns true for an address of HTTPS with a host, without a user name, and of printable ASCII only.
bool isSecureAddress(std::string_view address);
