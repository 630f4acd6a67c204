// Chooses fonts with which text fits its frame.
#pragma once

#include <QFont>
#include <QSize>
#include <QString>
#include <functional>

// Returns the largest font, up to the given size, for which `fits` returns true; the smallest readable font if there is
// none.
QFont fittedFont(QFont font, const std::function<bool(const QFont&)>& fits);

// Returns true if a label of this size shows all of the text. A label that wraps breaks lines between words.
bool labelShows(const QString& text, const QFont& font, QSize size, bool wraps);
