#include "platform/qt/qt_menu.h"

#include <utility>

#include "platform/qt/interface_text.h"
#include "platform/qt/posted_work.h"

QtMenuItem::QtMenuItem(QAction* action, const std::string& title) : action_(action) { QtMenuItem::setTitle(title); }

void QtMenuItem::setTitle(const std::string& title) {
  title_ = title;
  if (action_) action_->setText(controlTitle(title));
}

void QtMenuItem::setEnabled(bool enabled) {
  if (action_) action_->setEnabled(enabled);
}

void QtMenuItem::setOn(bool on) {
  if (!action_) return;
  action_->setCheckable(true);  // not earlier, because one checkable item indents all others
  action_->setData(on);
  action_->setChecked(on);
}

std::shared_ptr<MenuItem> QtMenu::addItem(const std::string& title, Action action) {
  QAction* const item = menu_.addAction(QString());
  QObject::connect(item, &QAction::triggered, item, [item, action = std::move(action)] {
    if (item->isCheckable()) item->setChecked(item->data().toBool());  // undoes the change by Qt: the program decides
    if (action) post(*item, action);
  });
  return std::make_shared<QtMenuItem>(item, title);
}

void QtMenu::addSeparator() { menu_.addSeparator(); }
