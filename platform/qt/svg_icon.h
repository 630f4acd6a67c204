// Icons of files in the format SVG, sharp at every size.
#pragma once

#include <QByteArray>
#include <QIcon>
#include <QString>

// An icon that draws the file. Where the desktop's icon theme has one of this name, it is told of that name, too, so
// that it can draw its own.
QIcon svgIcon(const QByteArray& file, const QString& name);

// The same for a file of one colour, "#2e3436", which gives way to the colour that the desktop writes with now. Its
// disabled form is pale, and has no name.
QIcon symbolicIcon(const QByteArray& file, const QString& name, QIcon::Mode mode);
