// Where an application with a name on the session bus has its interfaces.
#pragma once

#include <string>

// "/com/example/Some_Name" for "com.example.Some-Name".
std::string objectPath(const std::string& name);
