#include "platform/linux/object_path.h"

std::string objectPath(const std::string& name) {
  std::string path = "/" + name;
  for (char& character : path) {
    if (character == '.') character = '/';
    if (character == '-') character = '_';
  }
  return path;
}
