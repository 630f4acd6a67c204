// Making text fit the frame that it was given.
#pragma once

#include <QFont>
#include <QSize>
#include <QString>
#include <functional>

// The font, or else the largest smaller one with which `fits` holds; the smallest that can be read if none does.
QFont fittedFont(QFont font, const std::function<bool(const QFont&)>& fits);

// Whether a label of this size shows all of the text. One that wraps does so between words.
bool labelShows(const QString& text, const QFont& font, QSize size, bool wraps);
