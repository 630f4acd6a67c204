// A picture in a window.
#pragma once

#include <QImage>
#include <QString>
#include <QWidget>

// Draws the picture as large as its frame allows, with its aspect ratio, centred, at the screen's resolution. Draws
// nothing if the file is no picture.
class ImageWidget : public QWidget {
 public:
  ImageWidget(QString path, QWidget* parent) : QWidget(parent), path_(std::move(path)) {}

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void load(QSize pixels);

  QString path_;
  QImage image_;
  QSize loadedFor_;
};
