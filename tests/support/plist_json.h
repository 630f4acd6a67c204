// Property-list values as the vectors write them down.
#pragma once

#include <nlohmann/json.hpp>

#include "values/plist_value.h"

// `{"str": …}`, `{"int": decimal}`, `{"real": bits}`, `{"bool": …}`, `{"date": bits}`, `{"data": hexadecimal}`,
// `{"utf16": units}` for a string with an unpaired surrogate, `{"array": […]}`, and `{"dict": […]}` with the pairs
// in the order of their keys.
nlohmann::json toJson(const PlistValue& value);

// How many arrays lie one in another from here down, each the only element of the one above.
unsigned nestedArrays(const PlistValue& value);

// The same value, built anew: it shares no storage with the document that `value` may lie in.
PlistValue deepCopy(const PlistValue& value);
