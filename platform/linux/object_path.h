// Object paths of applications on the session bus.
#pragma once

#include <string>

// Returns the object path of an application by its bus name: "/com/example/Some_Name" for "com.example.Some-Name".
std::string objectPath(const std::string& name);
