// Values as JSON.
#pragma once

#include <string>
#include <string_view>

// Returns the text as a JSON string, with everything but printable ASCII escaped. An unpaired surrogate becomes U+FFFD.
std::string jsonString(std::u16string_view units);

std::string_view jsonTruth(bool value);
