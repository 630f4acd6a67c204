#include "platform/qt/image_widget.h"

#include <QImageReader>
#include <QPainter>

void ImageWidget::paintEvent(QPaintEvent*) {
  load((QSizeF(size()) * devicePixelRatioF()).toSize());
  if (image_.isNull()) return;
  QRectF place(QPointF(), QSizeF(image_.size()) / devicePixelRatioF());
  place.moveCenter(QRectF(rect()).center());
  QPainter painter(this);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(place, image_);
}

// Reads the file again for each size, so that a vector image stays sharp.
void ImageWidget::load(QSize pixels) {
  if (loadedFor_ == pixels) return;
  loadedFor_ = pixels;
  QImageReader reader(path_);
  const QSize size = reader.size();
  if (size.isValid()) reader.setScaledSize(size.scaled(pixels, Qt::KeepAspectRatio));
  image_ = reader.read();
  if (!size.isValid() && !image_.isNull())
    image_ = image_.scaled(pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}
