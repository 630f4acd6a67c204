#include "platform/linux/session/file_manager.h"

#include <systemd/sd-bus.h>

#include <filesystem>
#include <string_view>

#include "platform/linux/detached_process.h"

namespace {

constexpr const char* fileManagerName = "org.freedesktop.FileManager1";
constexpr const char* fileManagerPath = "/org/freedesktop/FileManager1";

void openFolderOf(const std::string& path) { openWithDesktop(std::filesystem::path(path).parent_path().string()); }

bool isAsciiLetterOrDigit(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9');
}

// The URL of an absolute path, with every byte escaped that a URL's path cannot hold.
std::string fileUrl(const std::string& path) {
  constexpr std::string_view unescaped = "/-._~!$&'()*+,;=:@[]";
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string url = "file://";
  for (const char character : path) {
    if (isAsciiLetterOrDigit(character) || unescaped.find(character) != std::string_view::npos) {
      url += character;
    } else {
      const auto byte = static_cast<unsigned char>(character);
      url += {'%', digits[byte >> 4], digits[byte & 0x0F]};
    }
  }
  return url;
}

}  // namespace

void openWithDesktop(const std::string& target) {
  if (!target.empty() && target.front() != '-') startDetached({"xdg-open", target}, "");
}

void FileManager::reveal(const std::string& path) {
  if (!bus_ || !bus_->isOpen()) bus_ = std::make_unique<BusConnection>(loop_, MessageBus::session);
  if (!bus_->isOpen()) return openFolderOf(path);
  const auto appendArguments = [url = fileUrl(path)](sd_bus_message* call) {
    return sd_bus_message_append(call, "ass", 1, url.c_str(), "") >= 0;
  };
  const auto timeout = clock_.after(timeout_, [path](Timer&) { openFolderOf(path); });
  bus_->call({fileManagerName, fileManagerPath, fileManagerName, "ShowItems"}, appendArguments,
             [path, timeout](sd_bus_message* reply) {
               if (!timeout->isValid()) return;  // the folder is open already
               timeout->invalidate();
               if (reply == nullptr) openFolderOf(path);
             });
}
