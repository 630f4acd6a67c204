// Checks pixel by pixel that all of a text is visible, in each font that a user's desktop may have.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTimeEdit>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/qt/alert_dialog.h"
#include "platform/qt/fitted_font.h"
#include "platform/qt/interface_text.h"
#include "platform/qt/qt_application.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_window.h"
#include "tests/support/program.h"

namespace {

const std::string longText =
    "Quillery keeps the bookmarks in order: folders first, then by title, with numbers by their value. It needs to "
    "read "
    "and write the bookmark file, which the system allows only to programs that its user has chosen.";

// Fills a window as densely as the program's own windows.
void fill(QtWindow& window, const std::string& iconPath) {
  window.add(Image{{20, 196, 64, 64}, iconPath});
  window.add(Label{.frame = {100, 232, 280, 22}, .text = "Keep bookmarks in order", .fontSize = 17, .isBold = true});
  window.add(Label{{100, 148, 280, 80}, longText});
  window.add(CheckBox{{18, 114, 364, 18}, "Start Quillery when you log in, and sort then", nullptr});
  window.add(Label{.frame = {20, 84, 96, 17}, .text = "Sort every day at:", .wraps = false});
  window.addTimePicker({124, 78, 90, 27});
  window.add(PopUp{{224, 78, 156, 26}, {"Once a day", "Twice a day, at noon too"}, nullptr})->select(1);
  window.add(Label{.frame = {20, 54, 360, 14}, .text = "No sort is due today.", .fontSize = 11, .isCentered = true});
  window.add(PushButton{{214, 12, 82, 32}, "Cancel", nullptr, KeyEquivalent::escape});
  window.add(PushButton{{302, 12, 82, 32}, "Save & Sort", nullptr, KeyEquivalent::returnKey});
}

// Returns the number of pixels that differ from the background when the widget is drawn in this size.
int inkOf(QWidget& widget, QSize size) {
  const QSize original = widget.size();
  widget.resize(size);
  const QImage image = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
  widget.resize(original);
  const QRgb background = image.pixel(image.width() - 1, image.height() - 1);
  int ink = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) ink += image.pixel(x, y) == background ? 0 : 1;
  return ink;
}

// Returns true if a label shows as much as in a taller frame, which is also wider if the label does not wrap.
bool showsAll(QLabel& label) {
  QSize more = label.size() + QSize(0, 300);
  const Qt::Alignment alignment = label.alignment();
  if (!label.wordWrap()) {
    label.setAlignment(Qt::AlignTop | Qt::AlignLeft);
    more += QSize(300, 0);
  }
  const bool all = inkOf(label, label.size()) == inkOf(label, more);
  label.setAlignment(alignment);
  return all && label.minimumSizeHint().width() <= label.width();
}

template <class Widget>
QList<Widget*> controls(QtWindow& window) {
  return window.widget().findChildren<Widget*>(QString(), Qt::FindDirectChildrenOnly);
}

void save(QWidget& widget, const std::string& name) {
  const char* const folder = std::getenv("QUILLERY_SCREENSHOTS");
  if (folder == nullptr) return;
  QDir().mkpath(folder);
  EXPECT_TRUE(widget.grab().save(QString("%1/%2.png").arg(folder, name.c_str())));
}

void expectEverythingIsVisible(const std::string& pictureName) {
  QtWindow window({400, 280, "Settings", true});
  fill(window, QUILLERY_ICONS "/quillery.svg");
  save(window.widget(), pictureName);
  for (QLabel* label : controls<QLabel>(window)) EXPECT_TRUE(showsAll(*label)) << label->text().toStdString();
  for (QCheckBox* box : controls<QCheckBox>(window)) EXPECT_LE(box->sizeHint().width(), box->width());
  for (QPushButton* button : controls<QPushButton>(window))
    EXPECT_LE(button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width(), button->width() - 6);
  for (QComboBox* comboBox : controls<QComboBox>(window)) EXPECT_LE(comboBox->sizeHint().width(), comboBox->width());
  for (QTimeEdit* timeEdit : controls<QTimeEdit>(window)) EXPECT_LE(timeEdit->sizeHint().width(), timeEdit->width());
}

TEST(Fitting, everythingInAWindowIsVisible) { expectEverythingIsVisible("window"); }

TEST(Fitting, everythingInAWindowIsVisibleInAnyFontSize) {
  const QFont usual = QApplication::font();
  for (const int pixelSize : {9, 11, 15, 18, 22, 28}) {
    QFont font = usual;
    font.setPixelSize(pixelSize);
    QApplication::setFont(font);
    expectEverythingIsVisible("window-" + std::to_string(pixelSize));
  }
  QApplication::setFont(usual);
}

TEST(Fitting, aWindowGrowsWithTheDesktopsText) {
  const QFont usual = QApplication::font();
  QFont large = usual;
  large.setPixelSize(26);  // twice the usual size
  QApplication::setFont(large);
  QtWindow window({300, 200, "Title"});
  window.add(Label{.frame = {20, 150, 200, 17}, .text = "Label", .wraps = false});
  window.add(PushButton{{10, 20, 91, 32}, "Push", nullptr});
  QtWindow wide({600, 200, "Title"});
  wide.add(Label{.frame = {20, 150, 200, 17}, .text = "Label", .wraps = false});
  QApplication::setFont(usual);
  EXPECT_EQ(window.widget().size(), QSize(600, 400));
  EXPECT_EQ(controls<QLabel>(window).front()->geometry(), QRect(40, 66, 400, 34));
  EXPECT_EQ(controls<QPushButton>(window).front()->geometry(), QRect(20, 296, 182, 64));
  EXPECT_EQ(QFontInfo(controls<QLabel>(window).front()->font()).pixelSize(), 26);
  EXPECT_EQ(QFontInfo(controls<QPushButton>(window).front()->font()).pixelSize(), 26);
  EXPECT_EQ(wide.widget().size(), QSize(720, 240)) << "within a screen of 800 pixels";
  EXPECT_EQ(QFontInfo(controls<QLabel>(wide).front()->font()).pixelSize(), 15) << "the same for all of its texts";
}

TEST(Fitting, anAlertFitsItsTexts) {
  QtEventLoop loop;
  const QtApplication application(*qApp, loop);  // sets the alert's icon
  AlertDialog alert({"Quillery could not sort the bookmarks because Safari is running.",
                     longText + "\n\n" + std::string(90, 'W') + "\n\n/home/ann/" + std::string(120, 'x') + "/y.plist",
                     {"Quit Safari & Sort", "Cancel", "Settings …"}});
  alert.adjustSize();
  save(alert, "alert");
  for (QLabel* label : alert.findChildren<QLabel*>())
    if (!label->text().isEmpty()) {
      EXPECT_TRUE(showsAll(*label)) << label->text().toStdString();
    }
  for (QPushButton* button : alert.findChildren<QPushButton*>()) EXPECT_LE(button->sizeHint().width(), button->width());
}

TEST(Fitting, shrinksAFontOnlyAsFarAsNeeded) {
  QFont font = QApplication::font();
  font.setPixelSize(30);
  const auto upTo = [](int largest) {
    return [=](const QFont& candidate) { return candidate.pixelSize() <= largest; };
  };
  EXPECT_EQ(fittedFont(font, upTo(40)).pixelSize(), 30);
  EXPECT_EQ(fittedFont(font, upTo(17)).pixelSize(), 17);
  EXPECT_EQ(fittedFont(font, upTo(1)).pixelSize(), 7) << "smaller fonts are not readable";
}

TEST(Fitting, breaksAWordOnlyAsALastResort) {
  const QFontMetrics metrics(QApplication::font());
  EXPECT_EQ(breakable("short words, and a/path/too", metrics, 400), "short words, and a/path/too");
  const QString broken = breakable("see " + QString(200, 'W'), metrics, 400);
  EXPECT_EQ(QString(broken).remove(QChar(0x200B)), "see " + QString(200, 'W'));
  EXPECT_EQ(broken.count(QChar(0x200B)), 199);
  EXPECT_TRUE(broken.startsWith("see W"));

  QtWindow window({200, 200, "Title"});
  window.add(Label{{0, 0, 100, 200}, std::string(60, 'W')});
  for (QLabel* label : controls<QLabel>(window)) EXPECT_TRUE(showsAll(*label));
}

// Runs the tests above on other screens, each in its own process, because Qt reads these variables only at its start.
TEST(Fitting, holdsOnScreensOfOtherDensities) {
  const std::vector<Environment> screens = {
      {{"QT_FONT_DPI", "96"}},      {{"QT_FONT_DPI", "192"}},      {{"QT_SCALE_FACTOR", "2"}},
      {{"QT_SCALE_FACTOR", "1.5"}}, {{"QT_SCALE_FACTOR", "1.25"}}, {{"QT_SCALE_FACTOR", "2"}, {"QT_FONT_DPI", "192"}},
      {{"QT_FONT_DPI", "60"}},
  };
  for (std::size_t index = 0; index < screens.size(); ++index) {
    Environment environment = screens[index];
    if (const char* const folder = std::getenv("QUILLERY_SCREENSHOTS"))
      environment["QUILLERY_SCREENSHOTS"] = std::string(folder) + "/" + std::to_string(index);
    const Ending ending =
        run("/proc/self/exe", {"--gtest_filter=Fitting.every*:Fitting.anAlert*:Fitting.breaks*"}, environment);
    EXPECT_EQ(ending.status, 0) << "screen " << index << ":\n" << ending.output;
    EXPECT_NE(ending.output.find("[  PASSED  ] 4 tests."), std::string::npos);
  }
}

}  // namespace
