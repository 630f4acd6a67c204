// Icons from SVG files, sharp at every size.
#pragma once

#include <QByteArray>
#include <QIcon>
#include <QString>

// Returns an icon that draws the SVG file. If the icon theme has an icon with this name, the icon has the name too, so
// that the desktop can draw the theme's.
QIcon svgIcon(const QByteArray& file, const QString& name);

// Returns the same for a file whose only colour is "#2e3436", drawn in the desktop's current text colour. It has an
// outline of the opposite lightness, because panels may have any colour. The disabled icon is pale and has no name.
QIcon symbolicIcon(const QByteArray& file, const QString& name, QIcon::Mode mode);
