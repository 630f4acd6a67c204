#include "platform/qt/qt_status_item.h"

#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QTimer>
#include <chrono>
#include <iostream>
#include <utility>

#include "platform/product.h"
#include "platform/qt/icon_files.h"
#include "platform/qt/svg_icon.h"

namespace {

QString symbolName() { return QString::fromUtf8(product::bundleIdentifier.data()) + "-symbolic"; }

}  // namespace

QtStatusItem::PaletteWatch::PaletteWatch(std::function<void()> changed) : changed_(std::move(changed)) {
  QCoreApplication::instance()->installEventFilter(this);
}

bool QtStatusItem::PaletteWatch::eventFilter(QObject* object, QEvent* event) {
  if (object == QCoreApplication::instance() && event->type() == QEvent::ApplicationPaletteChange) changed_();
  return false;
}

QtStatusItem::QtStatusItem(EventLoop& loop) : tray_(loop) {
  if (tray_.isAvailable()) {
    makeTrayIcon();
  } else {
    std::cerr << "quillery: no system tray; opening the program again shows its menu\n";
    tray_.await([this] { makeTrayIcon(); });
  }
}

void QtStatusItem::makeTrayIcon() {
  trayIcon_ = std::make_unique<QSystemTrayIcon>();
  QObject::connect(trayIcon_.get(), &QSystemTrayIcon::activated, trayIcon_.get(),
                   [this](QSystemTrayIcon::ActivationReason reason) {
                     if (reason == QSystemTrayIcon::Trigger) popUpMenu();
                   });
  if (menu_) trayIcon_->setContextMenu(&menu_->menu());
  updateToolTip();
  updateIcon();
}

void QtStatusItem::setImage(const SymbolImage& image) {
  image_ = image;
  updateIcon();
  updateToolTip();
}

void QtStatusItem::setToolTip(const std::string& text) {
  toolTip_ = text;
  updateToolTip();
}

void QtStatusItem::setAppearsDisabled(bool appearsDisabled) {
  appearsDisabled_ = appearsDisabled;
  updateIcon();
}

// A panel is only told that the icon has changed, and asks this thread for the new one.
void QtStatusItem::display() {
  if (!trayIcon_) return;
  constexpr std::chrono::milliseconds enough(100);
  const auto end = std::chrono::steady_clock::now() + enough;
  QTimer turn;  // ends the wait for the next event
  turn.start(std::chrono::milliseconds(5));
  while (std::chrono::steady_clock::now() < end)
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers |
                                    QEventLoop::WaitForMoreEvents);
}

void QtStatusItem::setMenu(std::shared_ptr<Menu> menu) {
  const auto previous = std::exchange(menu_, std::dynamic_pointer_cast<QtMenu>(std::move(menu)));
  if (trayIcon_) trayIcon_->setContextMenu(menu_ ? &menu_->menu() : nullptr);
}

void QtStatusItem::popUpMenu() {
  if (menu_) menu_->menu().popup(QCursor::pos());
}

QIcon QtStatusItem::icon() const {
  const QIcon::Mode mode = appearsDisabled_ ? QIcon::Disabled : QIcon::Normal;
  if (image_.name == "bookmark") {
    return image_.isTemplate ? symbolicIcon(bookmarkSymbolFile, symbolName(), mode)
                             : svgIcon(bookmarkSymbolFile, QString());
  }
  const QString name = QString::fromStdString(image_.name);
  return image_.isTemplate ? QIcon::fromTheme(name + "-symbolic", QIcon::fromTheme(name)) : QIcon::fromTheme(name);
}

// An icon without an image stays out of the tray.
void QtStatusItem::updateIcon() {
  if (!trayIcon_) return;
  const QIcon icon = this->icon();
  trayIcon_->setIcon(icon);
  trayIcon_->setVisible(!icon.isNull());
}

void QtStatusItem::updateToolTip() {
  if (trayIcon_)
    trayIcon_->setToolTip(QString::fromStdString(toolTip_.empty() ? image_.accessibilityDescription : toolTip_));
}
