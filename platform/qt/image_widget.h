// A picture in a window.
#pragma once

#include <QImage>
#include <QString>
#include <QWidget>

// Shows as much of its frame as the picture fills in its own proportions, in the middle, in as many pixels as the
// screen has there. Shows nothing if the file is no picture.
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
