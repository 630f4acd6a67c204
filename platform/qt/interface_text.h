// The program's texts as Qt wants them.
#pragma once

#include <QFontMetrics>
#include <QString>
#include <string>

// A title of a control or a menu item. An ampersand is none of Qt's marks for a key.
QString controlTitle(const std::string& title);

// The text with places to break a line wherever there would else be none for more than `width`.
QString breakable(const QString& text, const QFontMetrics& metrics, int width);
