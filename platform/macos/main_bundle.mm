#include "platform/macos/main_bundle.h"

#include "platform/macos/conversions.h"

std::string MainBundle::path() { return textOf(NSBundle.mainBundle.bundlePath); }

std::string MainBundle::executablePath() {
  NSString* const path = NSBundle.mainBundle.executableURL.path;
  if (path == nil) throw Error("Bundle", 1, "The program’s own executable couldn’t be found (" + this->path() + ").");
  return textOf(path);
}

bool MainBundle::isInstalled() { return path().ends_with(".app"); }

std::string MainBundle::iconPath() { return path() + "/Contents/Resources/AppIcon.icns"; }

std::optional<std::string> MainBundle::information(const std::string& key) {
  id const value = [NSBundle.mainBundle objectForInfoDictionaryKey:stringOf(key)];
  return [value isKindOfClass:[NSString class]] ? std::optional(textOf(value)) : std::nullopt;
}
