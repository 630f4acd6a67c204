// Prepares the program's texts for Qt.
#pragma once

#include <QFontMetrics>
#include <QString>
#include <string>

// Returns the title of a control or a menu item with ampersands escaped, which would otherwise mark a shortcut key.
QString controlTitle(const std::string& title);

// Returns the text with zero-width spaces in words wider than `width`, so that lines can break there.
QString breakable(const QString& text, const QFontMetrics& metrics, int width);

// Returns the text without the zero-width spaces that breakable() has added, or any others.
QString unbroken(QString text);
