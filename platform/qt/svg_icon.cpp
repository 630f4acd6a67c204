#include "platform/qt/svg_icon.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QList>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>
#include <algorithm>

namespace {

constexpr const char* symbolColour = "#2e3436";

// Returns true if panels draw a symbol that they know by its name in their own colour. LXQt's draws its file unchanged.
bool panelsColourSymbols() { return !qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(':').contains("LXQt"); }

class SvgIconEngine : public QIconEngine {
 public:
  SvgIconEngine(QByteArray file, QString name) : file_(std::move(file)), name_(std::move(name)) {}

  void paint(QPainter* painter, const QRect& frame, QIcon::Mode, QIcon::State) override {
    const double scale = painter->device()->devicePixelRatioF();
    QPixmap picture((QSizeF(frame.size()) * scale).toSize());
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter inPicture(&picture);
    draw(inPicture, QRect(QPoint(), frame.size()));
    inPicture.end();
    painter->save();
    painter->setOpacity(painter->opacity() * opacity());
    painter->drawPixmap(frame.topLeft(), picture);
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
  virtual void draw(QPainter& painter, const QRect& frame) const { drawFile(painter, file_, {frame}); }
  virtual double opacity() const { return 1; }

  const QByteArray& file() const { return file_; }
  static void drawFile(QPainter& painter, const QByteArray& file, const QList<QRectF>& frames) {
    QSvgRenderer renderer(file);
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    for (const QRectF& frame : frames) renderer.render(&painter, frame);
  }

 private:
  QByteArray file_;
  QString name_;
};

class SymbolicIconEngine : public SvgIconEngine {
 public:
  SymbolicIconEngine(QByteArray file, QString name, QIcon::Mode mode)
      : SvgIconEngine(std::move(file), mode != QIcon::Disabled && panelsColourSymbols() ? std::move(name) : QString()),
        mode_(mode) {}
  QIconEngine* clone() const override { return new SymbolicIconEngine(*this); }

 protected:
  void draw(QPainter& painter, const QRect& frame) const override {
    const QColor colour = QGuiApplication::palette().color(QPalette::WindowText);
    drawOutline(painter, frame, colour.lightness() < middleLightness ? Qt::white : Qt::black);
    drawFile(painter, inColour(colour), {frame});
  }
  double opacity() const override { return mode_ == QIcon::Disabled ? 0.45 : 1; }

 private:
  static constexpr int middleLightness = 128;

  QByteArray inColour(const QColor& colour) const {
    return QByteArray(file()).replace(symbolColour, colour.name().toUtf8());
  }
  // The symbol, shifted in all directions.
  void drawOutline(QPainter& painter, const QRectF& frame, const QColor& colour) const {
    const double width = std::max(frame.width() / 20, 1.0);
    QList<QRectF> shifted;
    for (const int x : {-1, 0, 1})
      for (const int y : {-1, 0, 1}) shifted.append(frame.translated(x * width, y * width));
    drawFile(painter, inColour(colour), shifted);
  }

  QIcon::Mode mode_;
};

}  // namespace

QIcon svgIcon(const QByteArray& file, const QString& name) { return QIcon(new SvgIconEngine(file, name)); }

QIcon symbolicIcon(const QByteArray& file, const QString& name, QIcon::Mode mode) {
  return QIcon(new SymbolicIconEngine(file, name, mode));
}
