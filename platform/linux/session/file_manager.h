// The programs that the desktop has for addresses, folders and files.
#pragma once

#include <QObject>
#include <memory>
#include <string>

#include "platform/qt/session_connection.h"

// Opens an address, or a folder or file by its path, in the program that the user has for it: xdg-open knows which. One
// that could be taken for an option is ignored, and nothing tells of a failure.
void openWithDesktop(const std::string& target);

// There must be a QCoreApplication.
class FileManager {
 public:
  // Asks the file manager on the session bus to show the folder of this file with the file selected; the bus starts it
  // if it must. If there is none, or it cannot, the folder is opened.
  void reveal(const std::string& path);

 private:
  std::unique_ptr<SessionConnection> session_;  // kept, because the bus drops a request whose sender has left
  QObject receiver_;                            // of answers, which go with it
};
