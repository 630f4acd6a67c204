#include "platform/qt/fitted_font.h"

#include <QFontInfo>
#include <QFontMetrics>

QFont fittedFont(QFont font, const std::function<bool(const QFont&)>& fits) {
  constexpr int smallestPixelSize = 7;
  for (int pixelSize = QFontInfo(font).pixelSize(); !fits(font) && pixelSize > smallestPixelSize;)
    font.setPixelSize(--pixelSize);
  return font;
}

bool labelShows(const QString& text, const QFont& font, QSize size, bool wraps) {
  // On a screen with a fractional scale, text may be slightly wider than its measured width.
  constexpr int spare = 1;
  const int width = size.width() - spare;
  constexpr int unlimited = 1 << 20;
  const QRect room(0, 0, wraps ? width : unlimited, unlimited);
  const int flags = static_cast<int>(Qt::AlignTop) | (wraps ? Qt::TextWordWrap : 0);
  const QRect needed = QFontMetrics(font).boundingRect(room, flags, text);
  return needed.width() <= width && needed.height() <= size.height();
}
