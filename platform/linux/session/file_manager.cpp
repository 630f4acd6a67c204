#include "platform/linux/session/file_manager.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QUrl>
#include <filesystem>

#include "platform/linux/detached_process.h"

namespace {

constexpr const char* fileManagerName = "org.freedesktop.FileManager1";
constexpr const char* fileManagerPath = "/org/freedesktop/FileManager1";

void openFolderOf(const std::string& path) { openWithDesktop(std::filesystem::path(path).parent_path().string()); }

}  // namespace

void openWithDesktop(const std::string& target) {
  if (!target.empty() && target.front() != '-') startDetached({"xdg-open", target}, "");
}

void FileManager::reveal(const std::string& path) {
  if (!session_ || !session_->bus().isConnected()) session_ = std::make_unique<SessionConnection>();
  if (!session_->bus().isConnected()) return openFolderOf(path);
  QDBusMessage call = QDBusMessage::createMethodCall(fileManagerName, fileManagerPath, fileManagerName, "ShowItems");
  const QUrl file = QUrl::fromLocalFile(QString::fromStdString(path));
  call.setArguments({QStringList{QString::fromUtf8(file.toEncoded())}, QString()});
  auto* const answer = new QDBusPendingCallWatcher(session_->bus().asyncCall(call), &receiver_);
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, &receiver_, [path](QDBusPendingCallWatcher* ended) {
    if (ended->isError()) openFolderOf(path);
    ended->deleteLater();
  });
}
