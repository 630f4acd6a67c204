#include "platform/qt/alert_dialog.h"

#include <string>
#include <vector>

AlertDialog::AlertDialog(const Alert& alert) : TextDialog(alert.messageText, alert.informativeText) {
  const std::vector<std::string> titles = alert.buttons.empty() ? std::vector<std::string>{"OK"} : alert.buttons;
  for (std::size_t index = 0; index < titles.size(); ++index) {
    QPushButton& button = addButton(titles[index], index == 0 ? KeyEquivalent::returnKey : KeyEquivalent::none);
    connect(&button, &QPushButton::clicked, this, [this, index] {
      pressed_ = index;
      accept();
    });
    last_ = index;
    if (titles[index] != "Cancel" && titles.size() > 1) continue;
    cancel_ = index;
    pressWithEscape(button);
  }
}

std::size_t AlertDialog::answer() const { return pressed_.value_or(cancel_.value_or(last_)); }
