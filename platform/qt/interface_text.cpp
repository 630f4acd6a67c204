#include "platform/qt/interface_text.h"

#include <QTextBoundaryFinder>

namespace {

constexpr QChar zeroWidthSpace(0x200B);

QString withBreaks(const QString& part) {
  QString broken;
  QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, part);
  for (qsizetype begin = 0, end = 0; (end = characters.toNextBoundary()) > 0; begin = end) {
    if (begin > 0) broken += zeroWidthSpace;
    broken += part.mid(begin, end - begin);
  }
  return broken;
}

}  // namespace

QString controlTitle(const std::string& title) { return QString::fromStdString(title).replace('&', "&&"); }

QString breakable(const QString& text, const QFontMetrics& metrics, int width) {
  QString result;
  QTextBoundaryFinder places(QTextBoundaryFinder::Line, text);
  for (qsizetype begin = 0, end = 0; (end = places.toNextBoundary()) > 0; begin = end) {
    const QString part = text.mid(begin, end - begin);
    result += metrics.horizontalAdvance(part.trimmed()) > width ? withBreaks(part) : part;
  }
  return result;
}

QString unbroken(QString text) { return text.remove(zeroWidthSpace); }
