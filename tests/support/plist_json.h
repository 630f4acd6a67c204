// Property-list values in the JSON notation of the test vectors.
#pragma once

#include <nlohmann/json.hpp>

#include "values/plist_value.h"

// `{"str": …}`, `{"int": decimal}`, `{"real": bits}`, `{"bool": …}`, `{"date": bits}`, `{"data": hexadecimal}`,
// `{"utf16": units}` for a string with an unpaired surrogate, `{"array": […]}`, and `{"dict": […]}` with its pairs
// sorted by key.
nlohmann::json toJson(const PlistValue& value);

// The depth of nested arrays from `value` down, each the only element of the array around it.
unsigned nestedArrays(const PlistValue& value);

// A copy of a value that is no container; std::invalid_argument for a container.
PlistValue scalarCopy(const PlistValue& value);

// A copy that shares no storage with `value` or its document, and none inside itself.
PlistValue deepCopy(const PlistValue& value);
