#include "platform/qt/svg_icon.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

namespace {

constexpr const char* symbolColour = "#2e3436";

class SvgIconEngine : public QIconEngine {
 public:
  SvgIconEngine(QByteArray file, QString name) : file_(std::move(file)), name_(std::move(name)) {}

  void paint(QPainter* painter, const QRect& frame, QIcon::Mode, QIcon::State) override {
    QSvgRenderer renderer(file());
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    painter->save();
    painter->setOpacity(painter->opacity() * opacity());
    renderer.render(painter, frame);
    painter->restore();
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap image(size);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paint(&painter, QRect(QPoint(), size), mode, state);
    return image;
  }
  // The sizes that trays and window managers request.
  QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override {
    QList<QSize> sizes;
    for (const int side : {16, 22, 24, 32, 48, 64, 128, 256}) sizes.append(QSize(side, side));
    return sizes;
  }
  QString iconName() override { return QIcon::hasThemeIcon(name_) ? name_ : QString(); }
  bool isNull() override { return false; }
  QString key() const override { return "SvgIconEngine"; }
  QIconEngine* clone() const override { return new SvgIconEngine(*this); }

 protected:
  virtual QByteArray file() const { return file_; }
  virtual double opacity() const { return 1; }

 private:
  QByteArray file_;
  QString name_;
};

class SymbolicIconEngine : public SvgIconEngine {
 public:
  SymbolicIconEngine(QByteArray file, QString name, QIcon::Mode mode)
      : SvgIconEngine(std::move(file), mode == QIcon::Disabled ? QString() : std::move(name)), mode_(mode) {}
  QIconEngine* clone() const override { return new SymbolicIconEngine(*this); }

 protected:
  QByteArray file() const override {
    const QColor colour = QGuiApplication::palette().color(QPalette::WindowText);
    return SvgIconEngine::file().replace(symbolColour, colour.name().toUtf8());
  }
  double opacity() const override { return mode_ == QIcon::Disabled ? 0.45 : 1; }

 private:
  QIcon::Mode mode_;
};

}  // namespace

QIcon svgIcon(const QByteArray& file, const QString& name) { return QIcon(new SvgIconEngine(file, name)); }

QIcon symbolicIcon(const QByteArray& file, const QString& name, QIcon::Mode mode) {
  return QIcon(new SymbolicIconEngine(file, name, mode));
}
